#include "corvane/variant.h"

#include <gtest/gtest.h>

#include <cmath>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane {
namespace {

using corvane::testing::ErrorNumber;

TEST(VariantTypes, CodesMatchThePlatform) {
  EXPECT_EQ(Variant().Type(), 0);
  EXPECT_EQ(Variant::Null().Type(), 1);
  EXPECT_EQ(Variant(int16_t{1}).Type(), 2);
  EXPECT_EQ(Variant(42).Type(), 3);
  EXPECT_EQ(Variant(1.5f).Type(), 4);
  EXPECT_EQ(Variant(1.5).Type(), 5);
  EXPECT_EQ(Variant::Date(2026, 11, 22).Type(), 7);
  EXPECT_EQ(Variant("x").Type(), 8);
  EXPECT_EQ(Variant(Object()).Type(), 9);
  EXPECT_EQ(Variant(true).Type(), 11);
  EXPECT_EQ(Variant::FromBytes({1, 2}).Type(), 8209);
  EXPECT_EQ(Variant(int64_t{5}).Type(), 3);
  EXPECT_EQ(Variant(int64_t{1} << 40).Type(), 5);
}

TEST(VariantConversions, CIntRoundsHalfToEven) {
  struct Case { Variant in; int16_t out; };
  for (const Case& c : {Case{0.5, 0}, Case{1.5, 2}, Case{2.5, 2}, Case{-0.5, 0}, Case{-1.5, -2},
                        Case{2.4999, 2}, Case{"3.5", 4}, Case{" 7 ", 7}, Case{true, -1}, Case{Variant(), 0},
                        Case{"&H10", 16}, Case{"-32768", -32768}, Case{32767.4, 32767}}) {
    EXPECT_EQ(c.in.ToInteger(), c.out) << DebugString(c.in);
  }
}

TEST(VariantConversions, CIntRaisesOverflowTypeMismatchAndNull) {
  EXPECT_EQ(ErrorNumber([] { Variant(32767.5).ToInteger(); }), 6);
  EXPECT_EQ(ErrorNumber([] { Variant(-32769).ToInteger(); }), 6);
  EXPECT_EQ(ErrorNumber([] { Variant("40000").ToInteger(); }), 6);
  EXPECT_EQ(ErrorNumber([] { Variant("abc").ToInteger(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant("").ToInteger(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant("1 2").ToInteger(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant::Null().ToInteger(); }), 94);
  EXPECT_EQ(ErrorNumber([] { Variant(Object()).ToInteger(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant(3e10).ToLong(); }), 6);
  EXPECT_EQ(Variant(2147483647.4).ToLong(), 2147483647);
}

TEST(VariantConversions, TextForms) {
  EXPECT_EQ(Variant(int16_t{-5}).ToString(), "-5");
  EXPECT_EQ(Variant(0.5).ToString(), "0.5");
  EXPECT_EQ(Variant(3.0).ToString(), "3");
  EXPECT_EQ(Variant(1e20).ToString(), "1E+20");
  EXPECT_EQ(Variant(0.1f).ToString(), "0.1");
  EXPECT_EQ(Variant(1.0 / 3).ToString(), "0.333333333333333");
  EXPECT_EQ(Variant(true).ToString(), "True");
  EXPECT_EQ(Variant::Date(2026, 11, 2).ToString(), "2026-11-02");
  EXPECT_EQ(Variant::Date(2026, 11, 2, 8, 5, 0).ToString(), "2026-11-02 08:05:00");
  EXPECT_EQ(ErrorNumber([] { Variant::Null().ToString(); }), 94);
  EXPECT_EQ(Variant::Null().Text(), "");
  EXPECT_EQ(Variant().Text(), "");
}

TEST(VariantConversions, DatesBoolsAndBytes) {
  EXPECT_EQ(Variant("2026-02-28").ToDate(), DateSerial(2026, 2, 28));
  EXPECT_EQ(Variant(45000).ToDate(), 45000.0);
  EXPECT_EQ(ErrorNumber([] { Variant("tomorrow").ToDate(); }), 13);
  EXPECT_TRUE(Variant("True").ToBool());
  EXPECT_FALSE(Variant(" false ").ToBool());
  EXPECT_TRUE(Variant("-2").ToBool());
  EXPECT_EQ(ErrorNumber([] { Variant("yes").ToBool(); }), 13);
  EXPECT_EQ(Variant::FromBytes({7, 8}).ToBytes(), (Bytes{7, 8}));
  EXPECT_EQ(ErrorNumber([] { Variant("x").ToBytes(); }), 13);
  EXPECT_EQ(ErrorNumber([] { Variant().ToObject(); }), 424);
}

TEST(VariantCompare, FollowsThePlatformRules) {
  EXPECT_TRUE(Equals(Variant(3), Variant(int16_t{3})));
  EXPECT_TRUE(Equals(Variant(3), Variant(3.0)));
  EXPECT_TRUE(Equals(Variant("a"), Variant("a")));
  EXPECT_FALSE(Equals(Variant("a"), Variant("A")));  // binary
  EXPECT_FALSE(Equals(Variant(3), Variant("3")));    // a number never equals a text
  EXPECT_EQ(Compare(Variant(99), Variant("1")), -1);  // ... and is less
  EXPECT_EQ(Compare(Variant("1"), Variant(99)), 1);
  EXPECT_TRUE(Equals(Variant(), Variant("")));
  EXPECT_TRUE(Equals(Variant(), Variant(0)));
  EXPECT_EQ(Compare(Variant(), Variant("a")), -1);
  EXPECT_EQ(Compare(Variant::Null(), Variant::Null()), std::nullopt);
  EXPECT_FALSE(Equals(Variant::Null(), Variant()));
  EXPECT_EQ(Compare(Variant(true), Variant(0)), -1);  // True is -1
  EXPECT_EQ(Compare(Variant::Date(2026, 1, 1), Variant(DateSerial(2026, 1, 2))), -1);
}

TEST(VariantConcat, NullAndEmptyJoinAsNothing) {
  EXPECT_EQ(Concat({Variant("a"), Variant::Null(), Variant(), Variant(1), Variant(true)}), "a1True");
}

}  // namespace
}  // namespace corvane
