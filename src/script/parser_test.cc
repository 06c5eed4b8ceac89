// What the parser accepts and refuses, statement by statement: 0 for a page that compiles, else the
// compile error's number and line.
#include "script/parser.h"

#include <gtest/gtest.h>

#include "script/script_test_support.h"

namespace corvane::script {
namespace {

struct Case {
  const char* code;
  int number;  // 0: compiles
  int line;
};

class Forms : public ::testing::TestWithParam<Case> {};

TEST_P(Forms, CompileOrNameTheirError) {
  int number = 0, line = 0;
  try {
    CompileScript(GetParam().code, "/x.vbs");
  } catch (const ScriptError& e) {
    number = e.Number();
    line = e.Where().line;
    EXPECT_TRUE(e.IsCompileError());
  }
  EXPECT_EQ(number, GetParam().number) << GetParam().code;
  if (GetParam().number) {
    EXPECT_EQ(line, GetParam().line) << GetParam().code;
  }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Parser, Forms, ::testing::Values(
    Case{"Dim a, b(2), c(), d(1, 2)", 0, 0},
    Case{"Public a: Private b(3)", 0, 0},
    Case{"Const A = 1, B = -2.5, C = \"x\", D = #2026-01-01#, E = True, F = vbCrLf", 0, 0},
    Case{"Const A = B", 1045, 1},
    Case{"Const A = 1\nConst A = 2", 1041, 2},
    Case{"Dim a(n)", 1026, 1},
    Case{"Dim a(-2)", 1026, 1},
    Case{"ReDim Preserve a(1), b(2, 3)", 0, 0},
    Case{"ReDim a", 1005, 1},
    Case{"x = 1: y = 2 ' both", 0, 0},
    Case{"Set x = Nothing: Set y.z = x: Set a(1) = x", 0, 0},
    Case{"Set x", 1011, 1},
    Case{"Call f: Call f(1, 2): Call o.m(1): Call o.m", 0, 0},
    Case{"f 1, , 3: f , 2: f(1): o.m (1), 2", 0, 0},
    Case{"o.m(1, 2)", 1044, 1},
    Case{"If a Then b Else c", 0, 0},
    Case{"If a Then If b Then c Else d", 0, 0},
    Case{"If a Then\nElseIf b Then\nElse\nEnd If", 0, 0},
    Case{"If a\nEnd If", 1017, 1},
    Case{"If a Then\nElse\nElse\nEnd If", 1014, 3},
    Case{"Select Case x\nCase 1, 2\nCase Else\nEnd Select", 0, 0},
    Case{"Select Case x\nCase Else\nCase 1\nEnd Select", 1014, 3},
    Case{"Select x", 1021, 1},
    Case{"For i = 1 To 2 Step 2: Next", 0, 0},
    Case{"For Each x In y: Next x", 0, 0},
    Case{"For i 1 To 2: Next", 1011, 1},
    Case{"For i = 1, 2: Next", 1013, 1},
    Case{"For f() = 1 To 2: Next", 1011, 1},
    Case{"Sub f(): End Sub\nFor f = 1 To 2: Next", 1040, 2},
    Case{"Next", 1055, 1},
    Case{"Do While a: Loop: Do: Loop Until b: Do Until c: Loop", 0, 0},
    Case{"Do While a\nLoop Until b", 1025, 2},
    Case{"Do\nWend", 1019, 2},
    Case{"While a: Exit Do: Wend", 1039, 1},
    Case{"Sub s(ByVal a, ByRef b, c())\nExit Sub\nEnd Sub", 0, 0},
    Case{"Function f\nExit Sub\nEnd Function", 1039, 2},
    Case{"Sub s\nEnd Function", 1016, 2},
    Case{"Function f\nEnd Sub", 1015, 2},
    Case{"Sub s(a, a)\nEnd Sub", 1041, 1},
    Case{"Sub s\nEnd Sub\nSub s\nEnd Sub", 1041, 3},
    Case{"If a Then\nSub s\nEnd Sub\nEnd If", 1024, 2},
    Case{"Sub s\nSub t\nEnd Sub\nEnd Sub", 1024, 2},
    Case{"Class C\nPublic Default Property Get P: End Property\nProperty Let P(v): End Property\nEnd Class", 0, 0},
    Case{"Class C\nPrivate Default Function F: End Function\nEnd Class", 1057, 2},
    Case{"Class C\nProperty Get P: End Sub\nEnd Class", 1050, 2},
    Case{"Class C\nProperty Put P: End Property\nEnd Class", 1049, 2},
    Case{"Class C\nEnd Class\nClass C\nEnd Class", 1041, 3},
    Case{"x = Me", 1037, 1},
    Case{"With x\n.a = 1: .b.c 2\nEnd With", 0, 0},
    Case{"x = .a", 505, 1},
    Case{"With x\nEnd If", 1029, 2},
    Case{"On Error Resume Next: On Error GoTo 0", 0, 0},
    Case{"On Error GoTo 1", 1002, 1},
    Case{"Option Explicit\nDim x", 0, 0},
    Case{"Sub s\nOption Explicit\nEnd Sub", 1024, 2},
    Case{"x = (1", 1006, 1},
    Case{"x = f(1", 1006, 1},
    Case{"x = a.", 1010, 1},
    Case{"x = New", 1010, 1},
    Case{"End", 1024, 1},
    Case{"x = 1 +", 1023, 1},
    Case{"Let x = 1: Randomize: Stop", 0, 0}));
// clang-format on

TEST(Positions, MapTheExpandedTextToItsFiles) {
  testing::Site site{{"/a.asp", "ab\n<!--#include file=\"i.inc\"-->cd\nef"}, {"/i.inc", "x\nyz"}};
  Source source = ExpandPage("/a.asp", testing::LoaderOf(site));
  ASSERT_EQ(source.text, "ab\nx\nyzcd\nef");
  PositionMap map(source);
  // clang-format off
  const std::tuple<size_t, int, int, int> cases[] = {
      {0, 0, 1, 1}, {3, 1, 1, 1}, {5, 1, 2, 1}, {6, 1, 2, 2}, {7, 0, 2, 29}, {10, 0, 3, 1}};
  // clang-format on
  for (auto [offset, file, line, column] : cases) {
    Pos p = map.At(offset);
    EXPECT_EQ(p.file, file) << offset;
    EXPECT_EQ(p.line, line) << offset;
    EXPECT_EQ(p.column, column) << offset;
  }
  // Asked out of order, it answers the same.
  EXPECT_EQ(map.At(0).line, 1);
  EXPECT_EQ(map.At(10).line, 3);
}

}  // namespace
}  // namespace corvane::script
