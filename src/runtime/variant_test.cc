// Variant: each kind's code, text and number forms, the conversions and their errors, comparison,
// comparison with a literal, and the number text those conversions read and write.
#include "corvane/variant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <utility>
#include <variant>

#include "corvane/dates.h"
#include "runtime/number_text.h"
#include "runtime_test_support.h"

namespace corvane {

using testing::ErrorNumber;
using testing::Outcome;

const Variant empty, null = Variant::Null();

TEST(Variant, KindsWithTheirCodeTextAndNumberForms) {
  // text: CStr, or "#n" for the error it raises; number: CDbl, unless it raises `error`. A Single keeps 7
  // significant digits, a Double 15, with no trailing zeros.
  // clang-format off
  const struct { Variant v; int type; const char* text; double number; int error = 0; } cases[] = {
      {empty, 0, "", 0}, {null, 1, "#94", 0, 94}, {int16_t{-5}, 2, "-5", -5}, {3.0, 5, "3", 3},
      {42, 3, "42", 42}, {int64_t{5}, 3, "5", 5}, {int64_t{1} << 40, 5, "1099511627776", 0x1p40},
      {0.1f, 4, "0.1", 0.1f}, {1.0 / 3, 5, "0.333333333333333", 1.0 / 3}, {1e20, 5, "1E+20", 1e20},
      {true, 11, "True", -1}, {false, 11, "False", 0}, {"abc", 8, "abc", 0, 13}, {Object(), 9, "#13", 0, 13},
      {" 1.5E+3 ", 8, " 1.5E+3 ", 1500}, {Variant::Date(2026, 11, 2), 7, "2026-11-02", 46328},
      {Variant::Date(2026, 11, 2, 6, 0, 0), 7, "2026-11-02 06:00:00", 46328.25},
      {Variant::Missing(), 10, "#13", 0, 13}, {Variant::FromBytes({1}), 8209, "#13", 0, 13}, {0.0, 5, "0", 0},
      {-0.0, 5, "0", 0}, {-0.25, 5, "-0.25", -0.25}, {1e-5, 5, "1E-05", 1e-5}, {0.0001, 5, "0.0001", 0.0001},
      {1e14, 5, "100000000000000", 1e14}, {1e15, 5, "1E+15", 1e15}, {-123.0, 5, "-123", -123},
      {999999999999999.0, 5, "999999999999999", 999999999999999.0},
      {2e17 / 3, 5, "6.66666666666667E+16", 2e17 / 3}, {1.0f / 3, 4, "0.3333333", 1.0f / 3},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(c.v.Type(), c.type) << c.text;
    EXPECT_EQ(Outcome([&] { return c.v.ToString(); }), c.text);
    EXPECT_EQ(ErrorNumber([&] { EXPECT_EQ(c.v.ToDouble(), c.number); }), c.error) << c.text;
  }
  EXPECT_EQ(Concat({"a", null, empty, 1, true}), "a1True");  // Null and Empty join as ""
  // The number text that CDbl reads.
  const std::optional<double> no;
  // clang-format off
  const struct { const char* text; std::optional<double> value; } parsed[] = {
      {"1.5E+3", 1500}, {" 7 ", 7}, {"\t-2.5\t", -2.5}, {"+.5", 0.5}, {"&H1F", 31}, {"&hFFFF", -1},
      {"&H10000", 65536}, {"&HFFFFFFFF", -1}, {"&O17", 15}, {"", no}, {" ", no}, {".", no}, {"-", no},
      {"1e", no}, {"1e+", no}, {"1 2", no}, {"1.2.3", no}, {"0x1F", no}, {"inf", no}, {"nan", no}, {"&H", no},
      {"&H100000000", no},
  };
  // clang-format on
  for (const auto& c : parsed) EXPECT_EQ(ParseNumberText(c.text), c.value) << c.text;
}

TEST(Variant, ConversionsRoundHalfToEvenAndRaiseOverflowMismatchAndNull) {
  auto cint = [](const Variant& v) { return Outcome([&] { return std::to_string(v.ToInteger()); }); };
  auto clng = [](const Variant& v) { return Outcome([&] { return std::to_string(v.ToLong()); }); };
  // clang-format off
  const struct { Variant in; const char* cintClng; } integers[] = {
      {0.5, "0 0"}, {1.5, "2 2"}, {2.5, "2 2"}, {-0.5, "0 0"}, {-1.5, "-2 -2"}, {"3.5", "4 4"},
      {true, "-1 -1"}, {empty, "0 0"}, {"&HFFFF", "-1 -1"}, {"-32768", "-32768 -32768"},
      {32767.4, "32767 32767"}, {32767.5, "#6 32768"}, {-32769, "#6 -32769"}, {"40000", "#6 40000"},
      {2147483647.4, "#6 2147483647"}, {2147483647.5, "#6 #6"}, {-2147483648.5, "#6 -2147483648"},
      {3e10, "#6 #6"}, {std::nan(""), "#6 #6"}, {"abc", "#13 #13"}, {"", "#13 #13"}, {Object(), "#13 #13"},
      {null, "#94 #94"},
  };
  // clang-format on
  for (const auto& c : integers) EXPECT_EQ(cint(c.in) + " " + clng(c.in), c.cintClng) << DebugString(c.in);
  auto cbool = [](const Variant& v) { return Outcome([&] { return v.ToBool() ? "True" : "False"; }); };
  auto cdate = [](const Variant& v) { return Outcome([&] { return DateText(v.ToDate()); }); };
  // clang-format off
  const struct { Variant in; const char* cboolCdate; } others[] = {
      {"True", "True #13"}, {" false ", "False #13"}, {"-2", "True #13"}, {"yes", "#13 #13"},
      {0.0, "False 1899-12-30"}, {45000, "True 2023-03-15"}, {"2026-02-28", "#13 2026-02-28"},
      {null, "#94 #94"}, {Object(), "#13 #13"},
  };
  // clang-format on
  for (const auto& c : others) EXPECT_EQ(cbool(c.in) + " " + cdate(c.in), c.cboolCdate) << DebugString(c.in);
  EXPECT_EQ(ErrorNumber([] { Variant(1e39).ToSingle(); }), 6);
  EXPECT_EQ(Variant::FromBytes({7, 8}).ToBytes(), (Bytes{7, 8}));
  EXPECT_EQ(ErrorNumber([] { Variant("x").ToBytes(); }), 13);
  EXPECT_EQ(ErrorNumber([] { empty.ToObject(); }), 424);  // Object required, Empty as any other value
}

TEST(Variant, CompareAndEqualsLiteral) {
  // Two numbers compare as numbers (True is -1), two texts as bytes; a number is less than any text;
  // Empty is 0 beside a number and "" beside a text; Null leaves the order unknown and equals nothing.
  // clang-format off
  const struct { Variant a, b; std::optional<int> order; } cases[] = {
      {3, int16_t{3}, 0}, {3, 3.0, 0}, {2, 2.5, -1}, {true, 0, -1}, {"a", "a", 0}, {"a", "A", 1},
      {"a", "ab", -1}, {"中", "z", 1}, {3, "3", -1}, {99, "1", -1}, {"1", 99, 1}, {empty, "", 0},
      {empty, 0, 0}, {empty, "a", -1}, {"a", empty, 1}, {"", empty, 0}, {empty, empty, 0},
      {Variant::Date(2026, 1, 1), 46024.0, -1}, {1, null, {}}, {null, null, {}}, {null, empty, {}},
      {null, "", {}},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(std::pair(Compare(c.a, c.b), Equals(c.a, c.b)), std::pair(c.order, c.order == 0)) << &c - cases;
  EXPECT_EQ(ErrorNumber([] { Compare(Object(), 1); }), 13);
  // Against a literal written in the code: a number compares numerically, a text as text.
  // clang-format off
  const struct { Variant v; std::variant<double, const char*> literal; const char* equal; } literals[] = {
      {"1", 1.0, "yes"}, {" 1 ", 1.0, "yes"}, {"1.0", 1.0, "yes"}, {"2", 1.0, "no"}, {1, 1.0, "yes"},
      {int16_t{1}, 1.0, "yes"}, {true, -1.0, "yes"}, {empty, 0.0, "yes"}, {empty, 1.0, "no"},
      {null, 0.0, "no"}, {"abc", 1.0, "#13"}, {"", 0.0, "#13"}, {Object(), 1.0, "#13"}, {1, "1", "yes"},
      {"1", "1", "yes"}, {" 1 ", "1", "no"}, {"a", "A", "no"}, {1.5, "1.5", "yes"}, {true, "True", "yes"},
      {empty, "", "yes"}, {null, "", "no"}, {Object(), "x", "#13"},
      {Variant::Date(2026, 11, 2), "2026-11-02", "yes"},
  };
  // clang-format on
  for (const auto& c : literals) {
    auto equal = [&](auto literal) { return EqualsLiteral(c.v, literal) ? "yes" : "no"; };
    EXPECT_EQ(Outcome([&] { return std::visit(equal, c.literal); }), c.equal) << DebugString(c.v);
  }
}

TEST(Variant, ByteAndCurrencyKeepTheirRangeAndText) {
  // clang-format off
  const struct { Variant v; int type; const char* text; double number; } kinds[] = {
      {Variant::FromByte(200), 17, "200", 200}, {Variant::FromCurrency(15000), 6, "1.5", 1.5},
      {Variant::FromCurrency(-1), 6, "-0.0001", -0.0001}, {Variant::FromCurrency(123450000), 6, "12345", 12345},
      {Variant::FromCurrency(INT64_MIN), 6, "-922337203685477.5808", -922337203685477.5808},
  };
  // clang-format on
  for (const auto& c : kinds) {
    EXPECT_EQ(c.v.Type(), c.type) << c.text;
    EXPECT_EQ(c.v.ToString(), c.text);
    EXPECT_EQ(c.v.ToDouble(), c.number) << c.text;
  }
  auto cbyte = [](const Variant& v) { return Outcome([&] { return std::to_string(v.ToByte()); }); };
  auto ccur = [](const Variant& v) { return Outcome([&] { return std::to_string(v.ToCurrency()); }); };
  // clang-format off
  const struct { Variant in; const char* cbyteCcur; } conversions[] = {
      {2.5, "2 25000"}, {3.5, "4 35000"}, {255.4, "255 2554000"}, {255.5, "#6 2555000"}, {-1, "#6 -10000"},
      {"0.00015", "0 2"}, {"0.00025", "0 2"}, {123456789012.3456, "#6 1234567890123456"}, {1e15, "#6 #6"}, {true, "#6 -10000"}, {null, "#94 #94"},
      {"x", "#13 #13"},
  };
  // clang-format on
  for (const auto& c : conversions)
    EXPECT_EQ(cbyte(c.in) + " " + ccur(c.in), c.cbyteCcur) << DebugString(c.in);
  EXPECT_EQ(Compare(Variant::FromCurrency(15000), 1.5), 0);
  EXPECT_EQ(Compare(Variant::FromByte(3), int16_t{4}), -1);
}

TEST(Variant, ArraysKeepBoundsAndCopyOnWrite) {
  using Bound = VariantArray::Bound;
  VariantArray grid({Bound{1, 2}, Bound{0, 3}});  // Dim grid(1 To 2, 0 To 2)
  EXPECT_EQ(grid.Size(), 6u);
  EXPECT_EQ(std::pair(grid.LBound(1), grid.UBound(1)), std::pair(1, 2));
  EXPECT_EQ(std::pair(grid.LBound(2), grid.UBound(2)), std::pair(0, 2));
  EXPECT_EQ(ErrorNumber([&] { grid.UBound(3); }), 9);
  // The first index runs fastest.
  const int32_t at[] = {2, 1};
  grid.At(at, 2) = "x";
  EXPECT_EQ(grid.Elements()[3], Variant("x"));
  const int32_t outside[] = {0, 1};
  EXPECT_EQ(ErrorNumber([&] { grid.At(outside, 2); }), 9);
  EXPECT_EQ(ErrorNumber([&] { grid.At(at, 1); }), 9);
  // ReDim Preserve may grow or shrink the last dimension only, keeping the elements that remain.
  grid.Redim({Bound{1, 2}, Bound{0, 4}}, true);
  EXPECT_EQ(grid.At(at, 2), Variant("x"));
  EXPECT_EQ(grid.Size(), 8u);
  EXPECT_EQ(ErrorNumber([&] { grid.Redim({Bound{1, 3}, Bound{0, 4}}, true); }), 9);
  EXPECT_EQ(ErrorNumber([&] { grid.Redim({Bound{0, -1}}, false); }), 9);
  grid.Redim({Bound{0, 2}}, false);
  EXPECT_EQ(grid.Elements(), (std::vector<Variant>{empty, empty}));
  // Copies share the array until one of them writes to it.
  Variant a = Variant::FromArray(VariantArray::Of({1, 2}));
  Variant b = a;
  EXPECT_EQ(a.ArrayPtr(), b.ArrayPtr());
  b.MutableArray()->Elements()[0] = "changed";
  EXPECT_EQ(a.ArrayPtr()->Elements()[0], Variant(1));
  EXPECT_EQ(b.ArrayPtr()->Elements()[0], Variant("changed"));
  EXPECT_EQ(std::pair(a.Type(), a.ArrayPtr()->UBound()), std::pair(vtVariantArray, 1));
  EXPECT_EQ(ErrorNumber([&] { a.ToString(); }), 13);
  EXPECT_EQ(Variant(1).MutableArray(), nullptr);
}

}  // namespace corvane
