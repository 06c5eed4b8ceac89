// The language's expressions and statements, each case a piece of code and what it writes.
#include <gtest/gtest.h>

#include "script/script_test_support.h"

namespace corvane::script {
namespace {

using testing::Output;

struct Case {
  const char* code;
  const char* out;
};

class Expressions : public ::testing::TestWithParam<Case> {};

TEST_P(Expressions, WriteTheirValue) {
  EXPECT_EQ(Output(std::string("x = ") + GetParam().code + "\nW TypeName(x) & \" \" & x"), GetParam().out)
      << GetParam().code;
}

// Every case is written as `x = <expression>`, then its TypeName and value.
// clang-format off
INSTANTIATE_TEST_SUITE_P(Language, Expressions, ::testing::Values(
    Case{"1 + 2 * 3", "Integer 7"},
    Case{"(1 + 2) * 3", "Integer 9"},
    Case{"2 ^ 3 ^ 2", "Double 64"},
    Case{"-2 ^ 2", "Double -4"},
    Case{"2 ^ -1", "Double 0.5"},
    Case{"7 \\ 2 * 3", "Integer 1"},
    Case{"7 Mod 4 + 1", "Integer 4"},
    Case{"10 / 4", "Double 2.5"},
    Case{"32767 + 1", "Long 32768"},
    Case{"2147483647 + 1", "Double 2147483648"},
    Case{"1 + 2 & 3", "String 33"},
    Case{"\"a\" & Null & 1", "String a1"},
    Case{"Null & Null", "Null "},
    Case{"\"say \"\"hi\"\"\"", "String say \"hi\""},
    Case{"&HFF", "Integer 255"},
    Case{"&HFFFF", "Integer -1"},
    Case{"&H10000", "Long 65536"},
    Case{"&O17", "Integer 15"},
    Case{"1.5E+3", "Double 1500"},
    Case{".5", "Double 0.5"},
    Case{"#2026-11-23#", "Date 2026-11-23"},
    Case{"#11/23/2026 10:30:00 PM#", "Date 2026-11-23 22:30:00"},
    Case{"Not 1 = 2", "Boolean True"},
    Case{"1 < 2 And 2 < 3", "Boolean True"},
    Case{"True Or False And False", "Boolean True"},
    Case{"True Xor True", "Boolean False"},
    Case{"False Imp False", "Boolean True"},
    Case{"5 And 3", "Integer 1"},
    Case{"\"10\" = 10", "Boolean True"},
    Case{"\"abc\" < \"abd\"", "Boolean True"},
    Case{"10 < \"9\"", "Boolean False"},
    Case{"\"abc\" = 0", "error 13"},
    Case{"Empty = 0", "Boolean True"},
    Case{"Null = Null", "Null "},
    Case{"Nothing Is Nothing", "Boolean True"},
    Case{"vbCrLf = Chr(13) & Chr(10)", "Boolean True"},
    Case{"Len(\"abc\") + 1", "Long 4"},
    Case{"Array(1, 2)(1)", "Integer 2"},
    Case{"1 + _\n  2", "Integer 3"}));
// clang-format on

class Statements : public ::testing::TestWithParam<Case> {};

TEST_P(Statements, WriteWhatTheyDo) { EXPECT_EQ(Output(GetParam().code), GetParam().out) << GetParam().code; }

// clang-format off
INSTANTIATE_TEST_SUITE_P(Language, Statements, ::testing::Values(
    Case{"If 1 > 2 Then W 1 Else W 2", "2"},
    Case{"If 1 > 2 Then W 1: W 2 Else W 3: W 4", "34"},
    Case{"x = 2\nIf x = 1 Then\n W \"a\"\nElseIf x = 2 Then\n W \"b\"\nElse\n W \"c\"\nEnd If", "b"},
    Case{"Select Case \"b\"\n Case \"a\", \"b\": W 1\n Case Else: W 2\nEnd Select", "1"},
    Case{"Select Case 5\n Case 1\n W 1\n Case Else\n W 9\nEnd Select", "9"},
    Case{"For i = 1 To 10 Step 3: W i: Next", "14710"},
    Case{"For i = 3 To 1 Step -1\n W i\nNext\nW \"/\" & i", "321/0"},
    Case{"For i = 1 To 0: W i: Next: W TypeName(i)", "Integer"},
    Case{"For i = 0.5 To 1.6 Step 0.5: W i & \",\": Next", "0.5,1,1.5,"},
    Case{"For i = 1 To 5\n If i = 3 Then Exit For\n W i\nNext", "12"},
    Case{"For i = 1 To 3: i = i + 1: W i: Next", "24"},
    Case{"For Each x In Array(\"a\", 1, Null)\n W TypeName(x)\nNext", "StringIntegerNull"},
    Case{"i = 0\nDo While i < 3\n i = i + 1\nLoop\nW i", "3"},
    Case{"i = 0\nDo\n i = i + 1\nLoop Until i >= 5\nW i", "5"},
    Case{"i = 9\nDo Until i > 5\n i = i + 1\nLoop\nW i", "9"},
    Case{"i = 9\nDo\n i = i + 1\nLoop While i < 5\nW i", "10"},
    Case{"Do\n i = i + 1\n If i = 4 Then Exit Do\nLoop\nW i", "4"},
    Case{"While i < 3: i = i + 1: Wend: W i", "3"},
    Case{"Dim a(2, 1)\na(2, 1) = 7\nW UBound(a, 1) & UBound(a, 2) & a(2, 1)", "217"},
    Case{"Dim a()\nReDim a(1)\na(1) = 5\nReDim Preserve a(3)\nW UBound(a) & a(1)", "35"},
    Case{"ReDim a(2)\na(0) = 1\nReDim a(2)\nW IsEmpty(a(0))", "True"},
    Case{"Dim a(1)\na(0) = 3\nErase a\nW UBound(a) & IsEmpty(a(0))", "1True"},
    Case{"a = Array(1, 2)\nb = a\nb(0) = 9\nW a(0) & b(0)", "19"},
    Case{"Const A = 5, B = \"x\"\nW A & B", "5x"},
    Case{"Const N = -3\nW N * 2", "-6"},
    Case{"s = \"a\"\nFor i = 1 To 3: s = s & i & \",\": Next\nW s", "a1,2,3,"},
    Case{"s = \"ab\"\ns = s & s\nW s", "abab"},
    Case{"s = 5\ns = s & \"x\"\nW s", "5x"},
    Case{"W 1 ' a comment\nRem another\nW 2", "12"},
    Case{"x = 1 : y = 2 : W x + y", "3"},
    Case{"Let x = 4: W x", "4"},
    Case{"Randomize 1\nW Rnd() < 1", "True"},
    Case{"W ScriptEngine & ScriptEngineMajorVersion & ScriptEngineMinorVersion", "VBScript58"},
    Case{"If Null Then W 1 Else W 2", "2"},
    Case{"x = \"5\"\nSelect Case x\n Case 5: W \"number\"\n Case Else: W \"other\"\nEnd Select", "number"},
    Case{"Select Case 5\n Case \"5\": W \"text\"\nEnd Select", "text"},
    Case{"For i = 1 To 3\n For j = 1 To 3\n  If j = 2 Then Exit For\n  W i & j & \" \"\n Next\nNext", "11 21 31 "},
    Case{"For i = 1 To 3\n Do\n  Exit Do\n Loop\n W i\nNext", "123"},
    Case{"Function F(): For i = 1 To 9: If i = 2 Then Exit Function\nF = i: Next: End Function\nW F()", "1"},
    Case{"Dim a()\nW UBound(a)", "error 9"},
    Case{"Dim a(1)\nReDim Preserve a(3)", "error 10"},
    Case{"ReDim a(1, 1)\nReDim Preserve a(2, 2)", "error 9"},
    Case{"ReDim a(1, 2)\na(1, 2) = 4\nReDim Preserve a(1, 5)\nW a(1, 2) & UBound(a, 2)", "45"},
    Case{"ReDim a(2)\nErase a\nW UBound(a)", "error 9"},
    Case{"x = 5\nErase x", "error 13"},
    Case{"Dim a(1)\nx = a\nx(0) = 1\nW IsEmpty(a(0))", "True"},
    Case{"a = Array(Array(1, 2), 3)\nW a(0)(1)", "2"},
    Case{"s = \"\"\nFor Each c In Split(\"a,b\", \",\"): s = s & \"[\" & c & \"]\": Next\nW s", "[a][b]"},
    Case{"s = Null\ns = s & \"x\"\nW s", "x"},
    Case{"With x\n .Foo\nEnd With", "error 424"}));
// clang-format on

class Procedures : public ::testing::TestWithParam<Case> {};

TEST_P(Procedures, PassAndReturnValues) {
  EXPECT_EQ(Output(GetParam().code), GetParam().out) << GetParam().code;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Language, Procedures, ::testing::Values(
    Case{"Function F(n)\n If n < 2 Then F = n Else F = F(n - 1) + F(n - 2)\nEnd Function\nW F(15)", "610"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nx = 1\nInc x\nW x", "2"},
    Case{"Sub Inc(ByVal n): n = n + 1: End Sub\nx = 1\nInc x\nW x", "1"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nx = 1\nInc(x)\nW x", "1"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nx = 1\nCall Inc(x)\nW x", "2"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nDim a(1)\na(1) = 5\nInc a(1)\nW a(1)", "6"},
    Case{"Sub Two(a, b): W a & b: End Sub\nTwo 1, 2\nTwo (3), 4\nCall Two(5, 6)", "123456"},
    Case{"Function G: G = \"g\": End Function\nW G & G()", "gg"},
    Case{"Sub S(x)\n If x Then Exit Sub\n W \"no\"\nEnd Sub\nS True\nS False", "no"},
    Case{"Function F(): F = 1: Exit Function: F = 2: End Function\nW F()", "1"},
    Case{"x = 1\nSub S: x = x + 1: End Sub\nS: S\nW x", "3"},
    Case{"Sub S: y = 5: End Sub\nS\nW IsEmpty(y)", "True"},
    Case{"Sub S: Dim x: x = x & \"a\": W x: End Sub\nS: S", "aa"},
    Case{"Function Later(): Later = \"defined below\": End Function\nW Later()", "defined below"},
    // ByRef reaches the caller's own variable through parameters, locals and globals; an expression
    // or a literal is passed as a value of the callee's own.
    Case{"Sub Inc(n): n = n + 1: End Sub\nSub Twice(m): Inc m: Inc m: End Sub\nx = 1\nTwice x\nW x", "3"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nFunction F(): Dim y: y = 1: Inc y: F = y: End Function\nW F()", "2"},
    Case{"Sub Inc(n): n = n + 1: End Sub\nx = 1\nSub S: Inc x: End Sub\nS\nW x", "2"},
    Case{"Sub Inc(n): n = n + 1: W n: End Sub\nx = 1\nInc x + 1\nInc 5\nInc 5\nW x", "3661"},
    Case{"Sub Two(a, b): a = a + 1: b = b + 10: End Sub\nx = 1\nTwo x, x\nW x", "12"},
    Case{"Function F(ByVal n): n = n * 2: F = n: End Function\nx = 4\nW F(x) & x", "84"},
    // Frames deeper than one block of the value stack keep their values and start Empty again.
    Case{"Function D(n)\n Dim a, b, c, e, f, g, h, i, j, k\n D = IsEmpty(b) + IsEmpty(j)\n"
         " a = n: b = \"used\": j = n\n If n > 0 Then D = D + D(n - 1)\n D = D + (a = n) + (j = n)\n"
         "End Function\nW D(500) & \" \" & D(500)", "-2004 -2004"}));
// clang-format on

}  // namespace
}  // namespace corvane::script
