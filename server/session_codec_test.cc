#include "session_codec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "corvane/host.h"

namespace corvane::server {
namespace {

// Same kind and value, arrays compared element by element (Variant's == compares their handles).
bool Same(const Variant& a, const Variant& b) {
  if (a.IsBytes() || b.IsBytes()) return a.IsBytes() && b.IsBytes() && a.ToBytes() == b.ToBytes();
  const VariantArray* x = a.ArrayPtr();
  const VariantArray* y = b.ArrayPtr();
  if (!x || !y) return !x && !y && a == b;
  if (x->fixed != y->fixed || x->Rank() != y->Rank() || x->Size() != y->Size()) return false;
  for (size_t d = 0; d < x->Rank(); ++d)
    if (x->Bounds()[d].lower != y->Bounds()[d].lower || x->Bounds()[d].count != y->Bounds()[d].count)
      return false;
  for (size_t i = 0; i < x->Size(); ++i)
    if (!Same(x->Elements()[i], y->Elements()[i])) return false;
  return true;
}

Variant Grid() {  // Dim g(-1 To 0, 2): two dimensions, a lower bound below zero, mixed elements
  VariantArray a({{-1, 2}, {0, 3}});
  for (size_t i = 0; i < a.Size(); ++i)
    a.Elements()[i] = i % 2 ? Variant(static_cast<int32_t>(i)) : Variant("x");
  a.fixed = true;
  return Variant::FromArray(std::move(a));
}

Variant Nested(int depth) {
  Variant v("leaf");
  for (int i = 0; i < depth; ++i) v = Variant::FromArray(VariantArray::Of({v, Variant::Null()}));
  return v;
}

struct ValueCase {
  const char* name;
  Variant value;
};

TEST(SessionCodec, EveryKindOfValueComesBackAsItWas) {
  // clang-format off
  const ValueCase cases[] = {
      {"Empty",         Variant()},
      {"Null",          Variant::Null()},
      {"Missing",       Variant::Missing()},
      {"Integer",       Variant(int16_t{-5})},
      {"Long",          Variant(int32_t{123456})},
      {"Long min",      Variant(std::numeric_limits<int32_t>::min())},
      {"Single",        Variant(1.5f)},
      {"Double",        Variant(-1e300)},
      {"Currency",      Variant::FromCurrency(-922337203685477LL * 10000)},
      {"Date",          Variant::Date(2026, 11, 22, 13, 45, 7)},
      {"String",        Variant("")},
      {"String CJK",    Variant("张伟 的日程")},
      {"String NUL",    Variant(std::string("a\0b", 3))},
      {"Boolean true",  Variant(true)},
      {"Byte",          Variant::FromByte(255)},
      {"byte array",    Variant::FromBytes({0, 1, 254, 255})},
      {"array",         Variant::FromArray(VariantArray::Of({Variant(int16_t{1}), Variant("a"), Variant::Null()}))},
      {"Dim a()",       Variant::FromArray(VariantArray())},
      {"2-dim fixed",   Grid()},
      {"nested",        Nested(kMaxArrayDepth)},
  };
  // clang-format on
  for (const ValueCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto [key, back] = DecodeNamedValue(EncodeNamedValue("Key", c.value));
    EXPECT_EQ(key, "Key");
    EXPECT_TRUE(Same(back, c.value)) << DebugString(back) << " for " << DebugString(c.value);
    EXPECT_EQ(back.Type(), c.value.Type());
  }
  auto nan = DecodeNamedValue(EncodeNamedValue("n", Variant(std::nan("")))).second;
  EXPECT_TRUE(std::isnan(nan.ToDouble()));
}

TEST(SessionCodec, ARecordKeepsItsSettingsAndTheOrderAndCaseOfItsKeys) {
  SessionRecord in{.started = 1767225600,
                   .timeoutMinutes = 45,
                   .codePage = 65001,
                   .lcid = -1,
                   .values = {{"personID", Variant(int32_t{3})},
                              {"sc_curdate", Variant("2026-01-01")},
                              {"Debug", Variant(true)},
                              {"grid", Grid()}}};
  SessionRecord out = DecodeSession(EncodeSession(in));
  EXPECT_EQ(out.started, in.started);
  EXPECT_EQ(out.timeoutMinutes, 45);
  EXPECT_EQ(out.codePage, 65001);
  EXPECT_EQ(out.lcid, -1);
  ASSERT_EQ(out.values.size(), in.values.size());
  for (size_t i = 0; i < in.values.size(); ++i) {
    EXPECT_EQ(out.values[i].first, in.values[i].first);
    EXPECT_TRUE(Same(out.values[i].second, in.values[i].second));
  }
}

TEST(SessionCodec, AnObjectIsRefusedNamingItsKey) {
  Variant object = host::Session().AsVariant();
  Variant holding = Variant::FromArray(VariantArray::Of({Variant(1), object}));
  EXPECT_FALSE(IsStorable(object));
  EXPECT_FALSE(IsStorable(holding));
  EXPECT_TRUE(IsStorable(Grid()));
  try {
    EncodeSession({.values = {{"ok", Variant(1)}, {"cart", holding}}});
    FAIL() << "encoded an object";
  } catch (const CodecError& e) {
    EXPECT_NE(std::string(e.what()).find("\"cart\""), std::string::npos) << e.what();
  }
  EXPECT_THROW(EncodeNamedValue("deep", Nested(kMaxArrayDepth + 1)), CodecError);
}

std::string Bytes(std::initializer_list<int> bytes) {
  std::string s;
  for (int b : bytes) s += static_cast<char>(b);
  return s;
}

TEST(SessionCodec, BadRecordsAreRefusedCleanly) {
  const std::string good = EncodeSession({.values = {{"a", Variant("text")}, {"g", Grid()}}});
  // clang-format off
  const std::pair<const char*, std::string> cases[] = {
      {"empty",              ""},
      {"version 0",          Bytes({0})},
      {"a later version",    Bytes({2, 0, 20, 0, 0, 0})},
      {"trailing bytes",     good + "x"},
      {"unknown tag",        Bytes({1, 1, 'k', 0x33})},
      {"Boolean of 2",       Bytes({1, 1, 'k', 11, 2})},
      {"Integer too wide",   Bytes({1, 1, 'k', 2, 0x80, 0x80, 0x04})},
      {"text past the end",  Bytes({1, 1, 'k', 8, 100, 'a'})},
      {"varint too long",    Bytes({1, 1, 'k', 3, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 1})},
      {"huge array",         Bytes({1, 1, 'k', 0x41, 0, 2, 0, 0xff, 0xff, 0x3f, 0, 0xff, 0xff, 0x3f, 0})},
      {"too many dims",      Bytes({1, 1, 'k', 0x41, 0, 100, 0, 1})},
      {"arrays too deep",    EncodeNamedValue("k", Nested(kMaxArrayDepth)).insert(3, Bytes({0x41, 0, 1, 0, 1}))},
  };
  // clang-format on
  for (const auto& [name, bytes] : cases) {
    SCOPED_TRACE(name);
    EXPECT_THROW(DecodeNamedValue(bytes), CodecError);
  }
  EXPECT_THROW(DecodeSession(Bytes({1, 0, 0, 0, 0, 0})), CodecError);  // a timeout of 0
  for (size_t n = 0; n < good.size(); ++n) EXPECT_THROW(DecodeSession(good.substr(0, n)), CodecError) << n;
  // Any byte changed to anything: read, or refused with CodecError, never a crash (ASan watches).
  for (size_t i = 0; i < good.size(); ++i)
    for (int b : {0, 1, 2, 0x7f, 0x80, 0xff}) {
      std::string bad = good;
      bad[i] = static_cast<char>(b);
      try {
        DecodeSession(bad);
      } catch (const CodecError&) {
      }
    }
}

}  // namespace
}  // namespace corvane::server
