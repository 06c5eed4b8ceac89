#include "script/builtins.h"

#include <gtest/gtest.h>

#include <ctime>

#include "corvane/dates.h"
#include "runtime/runtime_test_support.h"

namespace corvane::script {
namespace {

using testing::Outcome;

Variant I(int v) { return Variant(static_cast<int16_t>(v)); }
Variant L(int32_t v) { return Variant(v); }
Variant D(double v) { return Variant(v); }
Variant Sg(float v) { return Variant(v); }
Variant S(const char* v) { return Variant(v); }
Variant B(bool v) { return Variant(v); }
Variant Cy(int64_t scaled) { return Variant::FromCurrency(scaled); }
Variant Dt(int y, int m, int d, int h = 0, int n = 0, int s = 0) { return Variant::Date(y, m, d, h, n, s); }
Variant Arr(std::vector<Variant> v) { return Variant::FromArray(VariantArray::Of(std::move(v))); }
const Variant kNull = Variant::Null();
const Variant kEmpty;
const Variant kMissing = Variant::Missing();

// Calls a built-in as the interpreter does: by name, with its argument count checked.
std::string Call(BuiltinContext& context, const std::string& name, Args args) {
  const Builtin* b = FindBuiltin(name);
  if (!b) return "no such built-in";
  const auto n = static_cast<int>(args.size());
  if (n < b->minArgs || (b->maxArgs >= 0 && n > b->maxArgs)) return "wrong argument count";
  return Outcome([&] { return DebugString(b->call(context, args)); });
}

struct Case {
  const char* name;
  Args args;
  const char* expected;  // DebugString of the result (VarType:text), or "#n" for error n
};

void RunCases(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    BuiltinContext context;
    std::string args;
    for (const Variant& a : c.args) args += (args.empty() ? "" : ", ") + DebugString(a);
    EXPECT_EQ(Call(context, c.name, c.args), c.expected) << c.name << "(" << args << ")";
  }
}

TEST(Builtins, Conversions) {
  // clang-format off
  RunCases({
      {"CInt", {D(2.5)}, "2:2"},
      {"CInt", {D(3.5)}, "2:4"},
      {"CInt", {S("-2.5")}, "2:-2"},
      {"CInt", {D(32767.6)}, "#6"},
      {"CLng", {S("&HFF")}, "3:255"},
      {"CByte", {I(256)}, "#6"},
      {"CByte", {D(1.5)}, "17:2"},
      {"CCur", {D(1.23456)}, "6:1.2346"},
      {"CDbl", {S(" 1.5E+3 ")}, "5:1500"},
      {"CDbl", {S("abc")}, "#13"},
      {"CSng", {D(1.1)}, "4:1.1"},
      {"CStr", {B(true)}, "8:True"},
      {"CStr", {kNull}, "#94"},
      {"CStr", {kEmpty}, "8:"},
      {"CBool", {S("false")}, "11:False"},
      {"CBool", {I(2)}, "11:True"},
      {"CBool", {kNull}, "#94"},
      {"CDate", {S("2024-1-2 3:04:05")}, "7:2024-01-02 03:04:05"},
      {"CDate", {S("2024年3月5日")}, "7:2024-03-05"},
      {"CDate", {S("2024年2月30日")}, "#13"},
      {"CDate", {S("10:30 PM")}, "7:1899-12-30 22:30:00"},
      {"CDate", {D(45000)}, "7:2023-03-15"},
      {"CDate", {D(3e6)}, "#6"},
      {"CDate", {S("March 5")}, "#13"},
  });
  // clang-format on
}

TEST(Builtins, Inspection) {
  // clang-format off
  RunCases({
      {"IsArray", {Arr({})}, "11:True"},
      {"IsArray", {Variant::FromBytes({1})}, "11:True"},
      {"IsArray", {S("a")}, "11:False"},
      {"IsDate", {S("2024-02-29")}, "11:True"},
      {"IsDate", {S("2023-02-29")}, "11:False"},
      {"IsDate", {S("23:59")}, "11:True"},
      {"IsDate", {I(1)}, "11:False"},
      {"IsEmpty", {kEmpty}, "11:True"},
      {"IsNull", {kNull}, "11:True"},
      {"IsNumeric", {S(" 12 ")}, "11:True"},
      {"IsNumeric", {S("1e")}, "11:False"},
      {"IsNumeric", {kEmpty}, "11:True"},
      {"IsNumeric", {Dt(2024, 1, 1)}, "11:False"},
      {"IsNumeric", {kNull}, "11:False"},
      {"IsObject", {Variant(Object())}, "11:True"},
      {"TypeName", {Variant(Object())}, "8:Nothing"},
      {"TypeName", {Cy(1)}, "8:Currency"},
      {"TypeName", {Variant::FromByte(1)}, "8:Byte"},
      {"TypeName", {Arr({})}, "8:Variant()"},
      {"TypeName", {kNull}, "8:Null"},
      {"VarType", {Arr({})}, "2:8204"},
      {"VarType", {S("")}, "2:8"},
  });
  // clang-format on
}

TEST(Builtins, Text) {
  // clang-format off
  RunCases({
      {"Asc", {S("A")}, "2:65"},
      {"Asc", {S("中")}, "2:-10544"},  // D6D0 in GBK
      {"Asc", {S("")}, "#5"},
      {"AscW", {S("中")}, "2:20013"},
      {"AscW", {S("😀")}, "2:-10179"},  // its high surrogate, D83D
      {"Chr", {I(65)}, "8:A"},
      {"Chr", {I(-10544)}, "8:中"},
      {"Chr", {L(65536)}, "#5"},
      {"ChrW", {I(20013)}, "8:中"},
      {"InStr", {S("abcabc"), S("c")}, "3:3"},
      {"InStr", {I(4), S("abcabc"), S("c")}, "3:6"},
      {"InStr", {I(1), S("ABC"), S("b"), I(1)}, "3:2"},
      {"InStr", {I(1), S("ABC"), S("b"), I(0)}, "3:0"},
      {"InStr", {I(1), S("ABC"), S("b"), I(3)}, "#5"},
      {"InStr", {kNull, S("a")}, "Null"},
      {"InStr", {S("abc"), S("c"), kMissing, kMissing}, "3:3"},
      {"InStr", {I(0), S("a"), S("a")}, "#5"},
      {"InStr", {S("中文abc"), S("a")}, "3:3"},
      {"InStrRev", {S("abcabc"), S("bc")}, "3:5"},
      {"InStrRev", {S("abcabc"), S("bc"), I(4)}, "3:2"},
      {"InStrRev", {S("abcabc"), S("BC"), I(-1), I(1)}, "3:5"},
      {"InStrRev", {S("abc"), S(""), I(2)}, "3:2"},
      {"InStrRev", {S("abc"), S("a"), I(5)}, "3:0"},
      {"InStrRev", {S("abc"), S("a"), I(0)}, "#5"},
      {"Join", {Arr({S("a"), I(1), kNull}), S("-")}, "8:a-1-"},
      {"Join", {Arr({S("a"), S("b")})}, "8:a b"},
      {"Join", {S("x")}, "#13"},
      {"LCase", {kNull}, "Null"},
      {"UCase", {S("aBc中")}, "8:ABC中"},
      {"Left", {S("中文abc"), I(2)}, "8:中文"},
      {"Left", {kNull, I(2)}, "Null"},
      {"Left", {S("abc"), I(-1)}, "#5"},
      {"Right", {S("abc"), I(2)}, "8:bc"},
      {"Mid", {S("abcdef"), I(2), I(3)}, "8:bcd"},
      {"Mid", {S("abc"), I(2)}, "8:bc"},
      {"Mid", {S("abc"), I(0)}, "#5"},
      {"Mid", {S("abc"), I(1), I(-1)}, "#5"},
      {"Len", {S("中文😀")}, "3:4"},
      {"Len", {kNull}, "Null"},
      {"Len", {I(123)}, "3:3"},
      {"Trim", {S("  a b  ")}, "8:a b"},
      {"LTrim", {S("  a ")}, "8:a "},
      {"RTrim", {S("  a ")}, "8:  a"},
      {"Replace", {S("abcabc"), S("b"), S("X")}, "8:aXcaXc"},
      {"Replace", {S("abcabc"), S("b"), S("X"), I(3)}, "8:caXc"},
      {"Replace", {S("abcABC"), S("B"), S("X"), I(1), I(2), I(1)}, "8:aXcAXC"},
      {"Replace", {S("abcabc"), S("b"), S("X"), kMissing, I(1)}, "8:aXcabc"},
      {"Replace", {S("abc"), S(""), S("X")}, "8:abc"},
      {"Replace", {S("abc"), S("b"), S("X"), I(5)}, "8:"},
      {"Replace", {kNull, S("a"), S("b")}, "#94"},
      {"Replace", {S("aaa"), S("a"), S("b"), I(1), I(-2)}, "#5"},
      {"Space", {I(3)}, "8:   "},
      {"Space", {I(-1)}, "#5"},
      {"Split", {S("a,b,,c"), S(",")}, "Array(8:a, 8:b, 8:, 8:c)"},
      {"Split", {S("a b")}, "Array(8:a, 8:b)"},
      {"Split", {S("")}, "Array()"},
      {"Split", {S("a,b,c"), S(","), I(2)}, "Array(8:a, 8:b,c)"},
      {"Split", {S("aXbxc"), S("x"), I(-1), I(1)}, "Array(8:a, 8:b, 8:c)"},
      {"Split", {S("a,b"), S(","), I(0)}, "Array()"},
      {"StrComp", {S("a"), S("B")}, "2:1"},
      {"StrComp", {S("a"), S("B"), I(1)}, "2:-1"},
      {"StrComp", {S("a"), kNull}, "Null"},
      {"StrComp", {I(1), S("1")}, "2:0"},
      {"String", {I(3), S("ab")}, "8:aaa"},
      {"String", {I(2), I(321)}, "8:AA"},
      {"String", {I(-1), S("a")}, "#5"},
      {"String", {I(2), S("")}, "#5"},
      {"StrReverse", {S("ab中😀")}, "8:😀中ba"},
      {"Escape", {S("a b+中/é~")}, "8:a%20b+%u4E2D/%E9%7E"},
      {"Unescape", {S("%u4E2D%20x%zz%4")}, "8:中 x%zz%4"},
  });
  // clang-format on
}

TEST(Builtins, AscAndChrFollowThePagesCodePage) {
  BuiltinContext utf8;
  utf8.codePage = 65001;
  EXPECT_EQ(Call(utf8, "Asc", {S("中")}), "2:-18259");  // E4 B8 AD: the last two bytes, B8AD
  EXPECT_EQ(Call(utf8, "AscW", {S("中")}), "2:20013");
}

TEST(Builtins, Numbers) {
  // clang-format off
  RunCases({
      {"Abs", {I(-5)}, "2:5"},
      {"Abs", {I(-32768)}, "3:32768"},
      {"Abs", {kNull}, "Null"},
      {"Abs", {S("-1.5")}, "5:1.5"},
      {"Abs", {Cy(-15000)}, "6:1.5"},
      {"Fix", {D(-2.5)}, "5:-2"},
      {"Int", {D(-2.5)}, "5:-3"},
      {"Int", {Sg(2.7f)}, "4:2"},
      {"Int", {Dt(2024, 1, 2, 12)}, "7:2024-01-02"},
      {"Int", {kNull}, "Null"},
      {"Hex", {I(-1)}, "8:FFFF"},
      {"Hex", {L(-1)}, "8:FFFFFFFF"},
      {"Hex", {D(255.5)}, "8:100"},
      {"Hex", {D(254.5)}, "8:FE"},
      {"Hex", {D(5e9)}, "#6"},
      {"Hex", {kNull}, "Null"},
      {"Oct", {I(8)}, "8:10"},
      {"Oct", {I(-1)}, "8:177777"},
      {"Round", {D(2.5)}, "5:2"},
      {"Round", {D(3.5)}, "5:4"},
      {"Round", {D(2.675), I(2)}, "5:2.68"},
      {"Round", {D(2.665), I(2)}, "5:2.66"},
      {"Round", {I(7), I(2)}, "2:7"},
      {"Round", {Cy(12345), I(1)}, "6:1.2"},
      {"Round", {S("1.25"), I(1)}, "5:1.2"},
      {"Round", {D(1.5), I(-1)}, "#5"},
      {"Sgn", {D(-0.1)}, "2:-1"},
      {"Sgn", {kEmpty}, "2:0"},
      {"Sqr", {I(16)}, "5:4"},
      {"Sqr", {I(-1)}, "#5"},
      {"Sqr", {kNull}, "#94"},
      {"Log", {I(0)}, "#5"},
      {"Exp", {I(1000)}, "#6"},
      {"Atn", {I(1)}, "5:0.785398163397448"},
      {"RGB", {I(255), I(128), I(0)}, "3:33023"},
      {"RGB", {I(300), I(0), I(1)}, "3:65791"},
      {"RGB", {I(-1), I(0), I(0)}, "#5"},
  });
  // clang-format on
}

TEST(Builtins, RndIsThePlatformsSequence) {
  BuiltinContext c;
  EXPECT_EQ(Call(c, "Rnd", {}), "4:0.7055475");
  EXPECT_EQ(Call(c, "Rnd", {}), "4:0.533424");
  EXPECT_EQ(Call(c, "Rnd", {I(0)}), "4:0.533424");
  EXPECT_EQ(Call(c, "Rnd", {I(-1)}), "4:0.224007");
  EXPECT_EQ(Call(c, "Rnd", {I(-1)}), "4:0.224007");
  // Randomize with a number restarts nothing by itself, but from the same state it leads to the same
  // sequence.
  Call(c, "Randomize", {I(7)});
  const std::string first = Call(c, "Rnd", {});
  Call(c, "Rnd", {I(-1)});
  Call(c, "Randomize", {I(7)});
  EXPECT_EQ(Call(c, "Rnd", {}), first);
  EXPECT_NE(first, "4:0.224007");
}

// The clock fixed at 2024-03-15 10:20:30, local time.
class BuiltinDates : public ::testing::Test {
 protected:
  void SetUp() override {
    std::tm tm{};
    tm.tm_year = 124;
    tm.tm_mon = 2;
    tm.tm_mday = 15;
    tm.tm_hour = 10;
    tm.tm_min = 20;
    tm.tm_sec = 30;
    tm.tm_isdst = -1;
    const auto at = std::chrono::system_clock::from_time_t(std::mktime(&tm));
    SetClock([at] { return at; });
  }
  void TearDown() override { SetClock(nullptr); }
};

TEST_F(BuiltinDates, ClockAndFields) {
  const Variant d = Dt(2024, 3, 15, 10, 20, 30);  // a Friday
  // clang-format off
  RunCases({
      {"Now", {}, "7:2024-03-15 10:20:30"},
      {"Date", {}, "7:2024-03-15"},
      {"Time", {}, "7:1899-12-30 10:20:30"},
      {"Timer", {}, "4:37230"},
      {"Year", {S("2024-02-29")}, "2:2024"},
      {"Month", {kNull}, "Null"},
      {"Day", {S("x")}, "#13"},
      {"Minute", {d}, "2:20"},
      {"Weekday", {d}, "2:6"},
      {"Weekday", {d, I(2)}, "2:5"},
      {"Weekday", {d, I(0)}, "2:5"},
      {"Weekday", {d, I(8)}, "#5"},
      {"WeekdayName", {I(1)}, "8:星期日"},
      {"WeekdayName", {I(1), B(true)}, "8:周日"},
      {"WeekdayName", {I(1), B(false), I(2)}, "8:星期一"},
      {"WeekdayName", {I(8)}, "#5"},
      {"MonthName", {I(12)}, "8:十二月"},
      {"MonthName", {I(2), B(true)}, "8:2月"},
      {"MonthName", {I(13)}, "#5"},
  });
  // clang-format on
}

TEST(Builtins, DateArithmetic) {
  // clang-format off
  RunCases({
      {"DateAdd", {S("m"), I(1), S("2024-01-31")}, "7:2024-02-29"},
      {"DateAdd", {S("yyyy"), I(-1), S("2024-02-29")}, "7:2023-02-28"},
      {"DateAdd", {S("h"), I(25), S("2024-01-01")}, "7:2024-01-02 01:00:00"},
      {"DateAdd", {S("n"), I(-1), S("2024-01-01")}, "7:2023-12-31 23:59:00"},
      {"DateAdd", {S("WW"), I(2), S("2024-01-01")}, "7:2024-01-15"},
      {"DateAdd", {S("x"), I(1), S("2024-01-01")}, "#5"},
      {"DateAdd", {S("d"), I(1), kNull}, "Null"},
      {"DateAdd", {S("yyyy"), I(8000), S("2024-01-01")}, "#5"},
      {"DateDiff", {S("d"), S("2024-01-31 23:00"), S("2024-02-01 01:00")}, "3:1"},
      {"DateDiff", {S("yyyy"), S("2023-12-31"), S("2024-01-01")}, "3:1"},
      {"DateDiff", {S("m"), S("2024-03-15"), S("2024-01-01")}, "3:-2"},
      {"DateDiff", {S("q"), S("2024-03-31"), S("2024-04-01")}, "3:1"},
      {"DateDiff", {S("h"), S("2024-01-01 10:59:59"), S("2024-01-01 11:00:00")}, "3:1"},
      {"DateDiff", {S("s"), S("2024-01-01"), S("2024-01-02")}, "3:86400"},
      {"DateDiff", {S("w"), S("2024-01-01"), S("2024-01-14")}, "3:1"},
      {"DateDiff", {S("ww"), S("2024-03-16"), S("2024-03-17")}, "3:1"},
      {"DateDiff", {S("ww"), S("2024-03-16"), S("2024-03-17"), I(2)}, "3:0"},
      {"DatePart", {S("q"), S("2024-08-01")}, "2:3"},
      {"DatePart", {S("y"), S("2024-12-31")}, "2:366"},
      {"DatePart", {S("ww"), S("2024-01-06")}, "2:1"},
      {"DatePart", {S("ww"), S("2024-01-07")}, "2:2"},
      {"DatePart", {S("ww"), S("2021-01-01"), I(2), I(2)}, "2:53"},
      {"DatePart", {S("ww"), S("2021-01-04"), I(2), I(3)}, "2:1"},
      {"DatePart", {S("w"), S("2024-03-15"), I(2)}, "2:5"},
      {"DateSerial", {I(2024), I(2), I(30)}, "7:2024-03-01"},
      {"DateSerial", {I(24), I(1), I(1)}, "7:2024-01-01"},
      {"DateSerial", {I(99), I(1), I(1)}, "7:1999-01-01"},
      {"DateSerial", {I(2024), I(13), I(0)}, "7:2024-12-31"},
      {"DateSerial", {I(10000), I(1), I(1)}, "#5"},
      {"TimeSerial", {I(10), I(90), I(0)}, "7:1899-12-30 11:30:00"},
      {"DateValue", {S("2024-03-15 10:00:00")}, "7:2024-03-15"},
      {"TimeValue", {S("2024-03-15 10:00:00")}, "7:1899-12-30 10:00:00"},
      {"DateValue", {S("x")}, "#13"},
      {"FormatDateTime", {Dt(2024, 3, 5, 9, 8, 7)}, "8:2024-03-05 09:08:07"},
      {"FormatDateTime", {Dt(2024, 3, 5, 9, 8, 7), I(1)}, "8:2024年3月5日"},
      {"FormatDateTime", {Dt(2024, 3, 5, 9, 8, 7), I(2)}, "8:2024-03-05"},
      {"FormatDateTime", {Dt(2024, 3, 5, 9, 8, 7), I(3)}, "8:09:08:07"},
      {"FormatDateTime", {Dt(2024, 3, 5, 9, 8, 7), I(4)}, "8:09:08"},
      {"FormatDateTime", {Dt(2024, 3, 5), I(5)}, "#5"},
  });
  // clang-format on
}

TEST(Builtins, NumberFormats) {
  // clang-format off
  RunCases({
      {"FormatNumber", {D(1234.5)}, "8:1,234.50"},
      {"FormatNumber", {D(0.125), I(2)}, "8:0.13"},
      {"FormatNumber", {D(1.005), I(2)}, "8:1.01"},
      {"FormatNumber", {D(-0.5), I(1), I(0)}, "8:-.5"},
      {"FormatNumber", {D(-1234.5), I(0), I(-2), I(-1)}, "8:(1,235)"},
      {"FormatNumber", {L(1234567), I(0), I(-2), I(-2), I(0)}, "8:1234567"},
      {"FormatNumber", {D(-0.001)}, "8:0.00"},
      {"FormatNumber", {D(1e20)}, "8:100,000,000,000,000,000,000.00"},
      {"FormatNumber", {D(987654321098765.4), I(2), I(-2), I(-2), I(0)}, "8:987654321098765.00"},
      {"FormatNumber", {D(99.996)}, "8:100.00"},
      {"FormatNumber", {kNull}, "#94"},
      {"FormatNumber", {S("x")}, "#13"},
      {"FormatPercent", {D(1e307)}, "#6"},
      {"FormatNumber", {I(1), I(-2)}, "#5"},
      {"FormatCurrency", {D(-1234.5)}, "8:¥-1,234.50"},
      {"FormatCurrency", {I(-3), I(0), I(-2), I(-1)}, "8:(¥3)"},
      {"FormatPercent", {D(0.125)}, "8:12.50%"},
      {"FormatPercent", {D(-0.5), I(0)}, "8:-50%"},
  });
  // clang-format on
}

TEST(Builtins, Arrays) {
  Variant grid = Variant::FromArray(VariantArray({{1, 2}, {0, 3}}));
  // clang-format off
  RunCases({
      {"Array", {I(1), S("a")}, "Array(2:1, 8:a)"},
      {"UBound", {Arr({})}, "3:-1"},
      {"UBound", {grid, I(2)}, "3:2"},
      {"LBound", {grid}, "3:1"},
      {"UBound", {grid, I(3)}, "#9"},
      {"UBound", {Variant::FromBytes({1, 2, 3})}, "3:2"},
      {"UBound", {I(1)}, "#13"},
      {"Filter", {Arr({S("ab"), S("bc"), S("cd")}), S("b")}, "Array(8:ab, 8:bc)"},
      {"Filter", {Arr({S("ab"), S("bc"), S("cd")}), S("B"), B(false), I(1)}, "Array(8:cd)"},
      {"Filter", {S("x"), S("a")}, "#13"},
  });
  // clang-format on
}

TEST(Builtins, NamesAndConstantsAreFoundWhateverTheirCase) {
  ASSERT_NE(FindBuiltin("instrrev"), nullptr);
  EXPECT_EQ(FindBuiltin("INSTRREV")->name, "InStrRev");
  EXPECT_EQ(FindBuiltin("Eval"), nullptr);
  EXPECT_EQ(DebugString(*FindConstant("VBCRLF")), "8:\r\n");
  EXPECT_EQ(*FindConstant("vbObjectError"), Variant(int32_t{-2147221504}));
  EXPECT_EQ(*FindConstant("vbTextCompare"), Variant(int32_t{1}));
  EXPECT_EQ(*FindConstant("vbNullChar"), Variant(std::string(1, '\0')));
  EXPECT_EQ(*FindConstant("vbWhite"), Variant(int32_t{0xFFFFFF}));
  EXPECT_EQ(FindConstant("vbNothing"), nullptr);
}

}  // namespace
}  // namespace corvane::script
