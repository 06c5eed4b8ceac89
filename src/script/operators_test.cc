#include "script/operators.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>

#include "corvane/dates.h"
#include "runtime/runtime_test_support.h"

namespace corvane::script {
namespace {

using testing::Outcome;

Variant I(int v) { return Variant(static_cast<int16_t>(v)); }
Variant L(int32_t v) { return Variant(v); }
Variant By(int v) { return Variant::FromByte(static_cast<uint8_t>(v)); }
Variant Sg(float v) { return Variant(v); }
Variant Cy(double v) { return Variant::FromCurrency(std::llround(v * 10000)); }
Variant Dt(int y, int m, int d) { return Variant::Date(y, m, d); }
const Variant kNull = Variant::Null();
const Variant kEmpty;

using Binary = std::function<Variant(const Variant&, const Variant&)>;

const std::map<std::string, Binary>& Operators() {
  static const std::map<std::string, Binary> ops = {
      {"+", Add},
      {"-", Subtract},
      {"*", Multiply},
      {"/", Divide},
      {"\\", IntDivide},
      {"Mod", Modulo},
      {"^", Power},
      {"&", Concatenate},
      {"And", And},
      {"Or", Or},
      {"Xor", Xor},
      {"Eqv", Eqv},
      {"Imp", Imp},
      {"=", [](auto& a, auto& b) { return Compare(a, b, Comparison::Equal); }},
      {"<>", [](auto& a, auto& b) { return Compare(a, b, Comparison::NotEqual); }},
      {"<", [](auto& a, auto& b) { return Compare(a, b, Comparison::Less); }},
      {"<=", [](auto& a, auto& b) { return Compare(a, b, Comparison::LessEqual); }},
      {">", [](auto& a, auto& b) { return Compare(a, b, Comparison::Greater); }},
      {">=", [](auto& a, auto& b) { return Compare(a, b, Comparison::GreaterEqual); }},
  };
  return ops;
}

struct BinaryCase {
  Variant a;
  const char* op;
  Variant b;
  const char* expected;  // DebugString of the result (VarType:text), or "#n" for error n
};

// clang-format off
const BinaryCase kBinaryCases[] = {
    // Result types of + - *: the narrowest kind that holds the result.
    {I(1), "+", I(2), "2:3"},
    {I(32767), "+", I(1), "3:32768"},
    {L(2147483647), "+", I(1), "5:2147483648"},
    {I(-32768), "-", I(1), "3:-32769"},
    {By(200), "+", By(55), "17:255"},
    {By(200), "+", By(56), "2:256"},
    {By(1), "-", By(2), "2:-1"},
    {By(255), "*", By(255), "3:65025"},
    {Variant(true), "+", Variant(true), "2:-2"},
    {kEmpty, "+", kEmpty, "2:0"},
    {kEmpty, "+", L(5), "3:5"},
    {kEmpty, "*", By(3), "17:0"},
    {I(300), "*", I(300), "3:90000"},
    {L(100000), "*", L(100000), "5:10000000000"},
    {Sg(1.5f), "+", I(1), "4:2.5"},
    {Sg(1.5f), "+", L(1), "5:2.5"},
    {Sg(3e38f), "*", Sg(10.0f), "5:3.00000000549776E+39"},
    {Variant(0.1), "+", Variant(0.2), "5:0.3"},
    {Variant(1e308), "*", Variant(10.0), "#6"},
    {Cy(1.5), "+", Variant(0.25), "6:1.75"},
    {Cy(1.5), "*", Cy(1.5), "6:2.25"},
    {Cy(0.0001), "*", Cy(0.5), "6:0"},
    {Cy(0.0003), "*", Cy(0.5), "6:0.0002"},
    {Cy(1.5), "*", Variant(2.0), "5:3"},
    {Cy(900000000000000.0), "+", Cy(900000000000000.0), "#6"},
    // Dates: Date + number is a Date, Date - Date the days between.
    {Dt(2024, 2, 28), "+", I(2), "7:2024-03-01"},
    {Dt(2024, 3, 1), "-", Variant(0.5), "7:2024-02-29 12:00:00"},
    {Dt(2024, 3, 1), "-", Dt(2024, 2, 1), "5:29"},
    {Dt(2024, 3, 1), "*", I(1), "5:45352"},
    // Text: + of two texts joins them; a text beside a number is read as a Double.
    {Variant("a"), "+", Variant("b"), "8:ab"},
    {Variant("1"), "+", I(2), "5:3"},
    {Variant("1"), "+", Variant(true), "5:0"},
    {kEmpty, "+", Variant("x"), "8:x"},
    {Variant("x"), "+", I(1), "#13"},
    {Variant("4"), "-", Variant("1.5"), "5:2.5"},
    {kNull, "+", I(1), "Null"},
    {Variant("x"), "-", kNull, "Null"},
    // / \ Mod ^
    {I(7), "/", I(2), "5:3.5"},
    {I(1), "/", I(0), "#11"},
    {I(0), "/", kEmpty, "#6"},
    {I(7), "\\", I(2), "2:3"},
    {I(-7), "\\", I(2), "2:-3"},
    {Variant(7.5), "\\", I(2), "3:4"},
    {Variant(6.5), "\\", I(2), "3:3"},
    {By(7), "\\", By(2), "17:3"},
    {I(-32768), "\\", I(-1), "3:32768"},
    {L(INT32_MIN), "\\", L(-1), "#6"},
    {I(5), "\\", Variant(0.4), "#11"},
    {I(-7), "Mod", I(3), "2:-1"},
    {Variant(7.5), "Mod", I(3), "3:2"},
    {Variant("10"), "Mod", I(4), "3:2"},
    {I(1), "Mod", kEmpty, "#11"},
    {Variant(3e10), "\\", I(1), "#6"},
    {I(2), "^", I(10), "5:1024"},
    {I(-8), "^", Variant(1.0 / 3), "#5"},
    {I(0), "^", I(-1), "#5"},
    {kNull, "^", I(2), "Null"},
    // &: Null & Null is Null, otherwise Null and Empty are "".
    {kNull, "&", kNull, "Null"},
    {kNull, "&", Variant("a"), "8:a"},
    {I(1), "&", Variant(2.5), "8:12.5"},
    {kEmpty, "&", Variant(true), "8:True"},
    // Logical on Booleans, bitwise on numbers, three-valued with Null.
    {Variant(true), "And", Variant(false), "11:False"},
    {I(12), "And", I(10), "2:8"},
    {I(12), "Or", L(3), "3:15"},
    {By(12), "Xor", By(10), "17:6"},
    {By(12), "Or", Variant(true), "2:-1"},
    {Variant(true), "And", I(1), "2:1"},
    {Variant(2.5), "And", I(3), "3:2"},
    {Variant("True"), "And", Variant(true), "11:True"},
    {Variant("6"), "And", I(3), "3:2"},
    {Variant("yes"), "And", Variant(true), "#13"},
    {Variant(true), "Eqv", Variant(true), "11:True"},
    {I(5), "Eqv", I(3), "2:-7"},
    {Variant(true), "Imp", Variant(false), "11:False"},
    {kNull, "And", Variant(false), "11:False"},
    {kNull, "And", Variant(true), "Null"},
    {I(0), "And", kNull, "2:0"},
    {kNull, "Or", Variant(true), "11:True"},
    {kNull, "Or", Variant(false), "Null"},
    {kNull, "Xor", Variant(true), "Null"},
    {kNull, "Imp", Variant(true), "11:True"},
    {Variant(false), "Imp", kNull, "11:True"},
    {Variant(true), "Imp", kNull, "Null"},
    {kNull, "And", kNull, "Null"},
    // Comparisons: numbers as numbers, texts binary, a number below any text, Empty as 0 or "".
    {I(2), "=", Variant(2.0), "11:True"},
    {L(3), "<", I(2), "11:False"},
    {Variant("10"), "<", Variant("9"), "11:True"},
    {I(100), "<", Variant("1"), "11:True"},
    {Variant("a"), "<", Variant("B"), "11:False"},
    {kEmpty, "=", I(0), "11:True"},
    {kEmpty, "=", Variant(""), "11:True"},
    {kEmpty, "<", Variant("a"), "11:True"},
    {Dt(2024, 1, 2), ">", Dt(2024, 1, 1), "11:True"},
    {Cy(1.5), ">=", Variant(1.5), "11:True"},
    {kNull, "=", kNull, "Null"},
    {I(1), "<>", kNull, "Null"},
};
// clang-format on

TEST(Operators, ResultTypesValuesAndErrors) {
  for (const BinaryCase& c : kBinaryCases) {
    const Binary& f = Operators().at(c.op);
    EXPECT_EQ(Outcome([&] { return DebugString(f(c.a, c.b)); }), c.expected)
        << DebugString(c.a) << " " << c.op << " " << DebugString(c.b);
  }
}

struct UnaryCase {
  Variant a;
  const char* negated;
  const char* inverted;  // Not
};

// clang-format off
const UnaryCase kUnaryCases[] = {
    {I(5), "2:-5", "2:-6"},
    {I(-32768), "3:32768", "2:32767"},
    {L(INT32_MIN), "5:2147483648", "3:2147483647"},
    {By(3), "2:-3", "17:252"},
    {Variant(true), "2:1", "11:False"},
    {kEmpty, "2:0", "2:-1"},
    {Variant(2.5), "5:-2.5", "3:-3"},
    {Sg(1.5f), "4:-1.5", "3:-3"},
    {Cy(1.25), "6:-1.25", "3:-2"},
    {Variant("3"), "5:-3", "3:-4"},
    {Variant("False"), "#13", "11:True"},
    {kNull, "Null", "Null"},
};
// clang-format on

TEST(Operators, NegateAndNot) {
  for (const UnaryCase& c : kUnaryCases) {
    EXPECT_EQ(Outcome([&] { return DebugString(Negate(c.a)); }), c.negated) << DebugString(c.a);
    EXPECT_EQ(Outcome([&] { return DebugString(Not(c.a)); }), c.inverted) << DebugString(c.a);
  }
}

TEST(Operators, ConditionsReadNullAsFalseAndTextAsBoolean) {
  EXPECT_FALSE(IsTrue(kNull));
  EXPECT_FALSE(IsTrue(kEmpty));
  EXPECT_TRUE(IsTrue(Variant("True")));
  EXPECT_TRUE(IsTrue(Variant(" 1 ")));
  EXPECT_FALSE(IsTrue(Variant(0.0)));
  EXPECT_EQ(testing::ErrorNumber([] { IsTrue(Variant("maybe")); }), 13);
}

}  // namespace
}  // namespace corvane::script
