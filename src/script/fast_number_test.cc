// The interpreter's direct reads and writes of numbers in Variants agree with Variant's own calls.
#include "script/fast_number.h"

#include <gtest/gtest.h>

namespace corvane::script {
namespace {

TEST(FastNumbers, ReadWhatVariantHolds) {
  EXPECT_EQ(ReadNum(Variant(int16_t{-5})).i, -5);
  EXPECT_EQ(ReadNum(Variant(int16_t{-5})).kind, NumKind::Integer);
  EXPECT_EQ(ReadNum(Variant(int32_t{70000})).kind, NumKind::Long);
  EXPECT_EQ(ReadNum(Variant(2.5)).d, 2.5);
  EXPECT_EQ(ReadNum(Variant(true)).i, -1);
  for (const Variant& other : {Variant(), Variant::Null(), Variant("1"), Variant(1.5f), Variant::FromDate(1),
                               Variant::FromByte(1), Variant::FromCurrency(1)})
    EXPECT_EQ(ReadNum(other).kind, NumKind::Other) << DebugString(other);
}

TEST(FastNumbers, WriteOverAnyKind) {
  // Each write leaves exactly the number, whatever was there (text and objects are released).
  for (Variant before :
       {Variant(), Variant(int16_t{1}), Variant(3.5), Variant("a long text that is on the heap"),
        Variant(Object()), Variant::FromArray(VariantArray::Of({Variant(1)}))}) {
    Variant v = before;
    SetLong(v, 7);
    EXPECT_EQ(v, Variant(int32_t{7}));
    SetInteger(v, 8);
    EXPECT_EQ(v, Variant(int16_t{8}));
    SetDouble(v, 0.5);
    EXPECT_EQ(v, Variant(0.5));
    SetBoolean(v, false);
    EXPECT_EQ(v, Variant(false));
    Clear(v);
    EXPECT_TRUE(v.IsEmpty());
  }
  Variant text("x"), copy;
  CopyValue(copy, text);
  EXPECT_EQ(copy, text);
  Variant moved;
  MoveValue(moved, copy);
  EXPECT_EQ(moved, Variant("x"));
}

TEST(FastNumbers, OnlyEmptyAndTheFastNumbersAreOverwrittenInPlace) {
  for (const Variant& plain :
       {Variant(), Variant(int16_t{1}), Variant(int32_t{2}), Variant(0.5), Variant(true)})
    EXPECT_TRUE(HoldsPlainValue(plain)) << DebugString(plain);
  for (const Variant& other : {Variant::Null(), Variant("x"), Variant(1.5f), Variant::FromDate(1),
                               Variant(Object()), Variant::FromArray(VariantArray::Of({Variant(1)}))})
    EXPECT_FALSE(HoldsPlainValue(other)) << DebugString(other);
}

TEST(FastNumbers, ScratchReleasesWhatItHolds) {
  // Text and arrays left in a scratch value are released with it (the leak checker sees them).
  Scratch text;
  text.Make() = Variant(std::string(100, 'x'));
  Scratch array;
  array.Make() = Variant::FromArray(VariantArray::Of({Variant("a long text that is on the heap")}));
  Variant& reused = array.Make();
  EXPECT_TRUE(reused.IsEmpty());
  SetLong(reused, 3);
  EXPECT_EQ(*array.get(), Variant(int32_t{3}));
}

TEST(FastNumbers, TypeIntegerResultsAsThePlatform) {
  Variant out;
  EXPECT_TRUE(IntegerResult(32767, true, out));
  EXPECT_EQ(out.Type(), vtInteger);
  EXPECT_TRUE(IntegerResult(32768, true, out));
  EXPECT_EQ(out.Type(), vtLong);
  EXPECT_TRUE(IntegerResult(5, false, out));
  EXPECT_EQ(out.Type(), vtLong);
  EXPECT_FALSE(IntegerResult(int64_t{1} << 31, false, out));
}

}  // namespace
}  // namespace corvane::script
