// The interpreter's fast paths give what the language's operators give, for every pair of operand
// kinds they may meet.
#include <gtest/gtest.h>

#include <tuple>

#include "script/operators.h"
#include "script/script_test_support.h"

namespace corvane::script {
namespace {

// Operands as the code writes them, and as Variants.
struct Operand {
  const char* code;
  Variant value;
};

std::vector<Operand> Operands() {
  return {
      {"CInt(7)", Variant(int16_t{7})},
      {"CInt(-3)", Variant(int16_t{-3})},
      {"CInt(32767)", Variant(int16_t{32767})},
      {"CLng(100000)", Variant(int32_t{100000})},
      {"CLng(-2147483647)", Variant(int32_t{-2147483647})},
      {"CDbl(2.5)", Variant(2.5)},
      {"CDbl(-0.5)", Variant(-0.5)},
      {"True", Variant(true)},
      {"Empty", Variant()},
      {"\"12\"", Variant("12")},
      {"CByte(4)", Variant::FromByte(4)},
  };
}

// The result of `code` as "Type:Text", or "error N".
std::string Result(const std::string& code) {
  return testing::Output("x = " + code + "\nW TypeName(x) & \":\" & x");
}

// A value as the script writes `TypeName(x) & ":" & x`.
std::string Describe(const Variant& v) {
  const char* names[] = {"Empty",  "Null",     "Integer", "Long",  "Single",
                         "Double", "Currency", "Date",    "String"};
  std::string name = v.Type() == vtBoolean ? "Boolean" : v.Type() == vtByte ? "Byte" : names[v.Type()];
  return name + ":" + v.Text();
}

struct Binary {
  const char* symbol;
  Variant (*op)(const Variant&, const Variant&);
};

TEST(Consistency, ArithmeticMatchesTheOperators) {
  const Binary ops[] = {{"+", Add},    {"-", Subtract},   {"*", Multiply},
                        {"/", Divide}, {"\\", IntDivide}, {"Mod", Modulo}};
  for (const Binary& op : ops) {
    for (const Operand& a : Operands()) {
      for (const Operand& b : Operands()) {
        std::string expected;
        try {
          expected = Describe(op.op(a.value, b.value));
        } catch (const Error& e) {
          expected = "error " + std::to_string(e.Number());
        }
        std::string code = std::string(a.code) + " " + op.symbol + " " + b.code;
        EXPECT_EQ(Result(code), expected) << code;
      }
    }
  }
}

TEST(Consistency, ComparisonsMatchTheOperators) {
  for (const Operand& a : Operands()) {
    for (const Operand& b : Operands()) {
      // Through variables, so that no literal rule applies.
      std::string code =
          "a = " + std::string(a.code) + ": b = " + b.code + "\nW (a < b) & (a = b) & (a >= b)";
      std::string expected;
      try {
        for (Comparison c : {Comparison::Less, Comparison::Equal, Comparison::GreaterEqual})
          expected += Compare(a.value, b.value, c).Text();
      } catch (const Error& e) {
        expected = "error " + std::to_string(e.Number());
      }
      EXPECT_EQ(testing::Output(code), expected) << code;
    }
  }
}

// `If left op right` inside Sub T(p, q), with a = p and b = q the page's globals and l a local.
std::string Condition(const std::string& left, const char* op, const std::string& right, bool asBranch,
                      const Operand& a, const Operand& b) {
  const std::string test = left + " " + op + " " + right;
  std::string code = "Sub T(p, q)\nDim l: l = " + std::string(right == "l" ? "q" : "p") + "\n";
  if (asBranch) {
    code += "If " + test + " Then W \"T\" Else W \"F\"\n";
  } else {
    code += "x = (" + test + ")\nIf IsNull(x) Then\nW \"F\"\nElseIf x Then\nW \"T\"\nElse\nW \"F\"\nEnd If\n";
  }
  code += "End Sub\na = " + std::string(a.code) + ": b = " + b.code + "\nT a, b";
  return testing::Output(code);
}

TEST(Consistency, ConditionsTakeTheBranchOfTheComparisonsValue) {
  // An If reads a comparison on a path of its own: it must take the branch the comparison's value
  // chooses (Null as False), or raise the same error, wherever its operands are read from.
  const std::tuple<std::string, const char*, std::string> variables[] = {{"p", "<", "l"}, {"a", "=", "b"}};
  for (const auto& [left, op, right] : variables)
    for (const Operand& a : Operands())
      for (const Operand& b : Operands())
        EXPECT_EQ(Condition(left, op, right, true, a, b), Condition(left, op, right, false, a, b))
            << left << op << right << " with " << a.code << ", " << b.code;
  // A literal on one side: its conversion rules apply to the other.
  const std::pair<std::string, std::string> literals[] = {{"p", "7"}, {"7", "q"}, {"\"7\"", "l"}};
  for (const auto& [left, right] : literals)
    for (const char* op : {"<", "<=", "=", "<>", ">", ">="})
      for (const Operand& a : Operands())
        EXPECT_EQ(Condition(left, op, right, true, a, a), Condition(left, op, right, false, a, a))
            << left << op << right << " with " << a.code;
}

TEST(Consistency, ForCountersTakeTheTypesOfAddition) {
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"For i = 1 To 3: Next: W TypeName(i) & i", "Integer4"},
      {"For i = 32766 To 32768: Next: W TypeName(i) & i", "Long32769"},
      {"For i = CLng(1) To 2: Next: W TypeName(i) & i", "Long3"},
      {"For i = 1 To 2 Step 0.5: Next: W TypeName(i) & i", "Double2.5"},
      {"For i = \"1\" To \"2\": Next: W TypeName(i) & i", "Double3"},
      {"For i = 2147483646 To 2147483647: Next: W TypeName(i) & i", "Double2147483648"},
  };
  // clang-format on
  for (auto [code, out] : cases) EXPECT_EQ(testing::Output(code), out) << code;
}

}  // namespace
}  // namespace corvane::script
