// Errors: run-time and compile errors with their numbers and lines, On Error Resume Next and the
// Err object, and the limits that turn hostile code into errors.
#include <gtest/gtest.h>

#include "script/script_test_support.h"

namespace corvane::script {
namespace {

using testing::Output;
using testing::RunPage;

struct ErrorCase {
  const char* page;
  int number;
  int line;
  bool compile;
};

class Errors : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(Errors, NameTheirNumberAndLine) {
  testing::Outcome o = RunPage(GetParam().page);
  EXPECT_EQ(o.number, GetParam().number) << GetParam().page;
  EXPECT_EQ(o.line, GetParam().line) << GetParam().page;
  EXPECT_EQ(o.compile, GetParam().compile) << GetParam().page;
  EXPECT_EQ(o.file, "/page.asp");
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, Errors, ::testing::Values(
    ErrorCase{"<%\nx = 1 / 0\n%>", 11, 2, false},
    ErrorCase{"text\n<%\nDim a(2)\nx = a(3)\n%>", 9, 4, false},
    ErrorCase{"<%\nx = \"a\" * 2\n%>", 13, 2, false},
    ErrorCase{"<%\nFunction F(a): F = a: End Function\nx = F(1, 2)\n%>", 450, 3, false},
    ErrorCase{"<%\nSub S\n  x = CInt(\"z\")\nEnd Sub\nS\n%>", 13, 3, false},
    ErrorCase{"<%\nDim a(1)\nReDim a(3)\n%>", 10, 3, false},
    ErrorCase{"<%\nCall Nowhere()\n%>", 35, 2, false},
    ErrorCase{"<%\nx = Nowhere(1)\n%>", 13, 2, false},
    ErrorCase{"<%\nErr.Raise 1000, \"src\", \"mine\"\n%>", 1000, 2, false},
    ErrorCase{"<% Option Explicit\nDim a\na = 1\nb = 2\n%>", 500, 4, false},
    ErrorCase{"<% Option Explicit\nSub S: c = 1: End Sub\nS\n%>", 500, 2, false},
    ErrorCase{"<%\nx = (1 + \n%>", 1023, 2, true},
    ErrorCase{"<%\nDim 1x\n%>", 1010, 2, true},
    ErrorCase{"<%\nIf x Then\ny = 1\n%>", 1014, 4, true},
    ErrorCase{"<%\nFor i = 1 To 2\n%>", 1020, 3, true},
    ErrorCase{"<%\nx = 1 2\n%>", 1025, 2, true},
    ErrorCase{"<%\nSub S(a, b): End Sub\nS(1, 2)\n%>", 1044, 3, true},
    ErrorCase{"<%\nDim a\nDim a\n%>", 1041, 3, true},
    ErrorCase{"<%\nExit For\n%>", 1039, 2, true},
    ErrorCase{"<%\nx = \"open\n%>", 1033, 2, true},
    ErrorCase{"<%\nx = 1 ~ 2\n%>", 1032, 2, true},
    ErrorCase{"<%\nLoop\n%>", 1038, 2, true},
    ErrorCase{"<%\nFor Each x\nNext\n%>", 1046, 2, true},
    ErrorCase{"<%\nSelect Case 1\nx = 1\nEnd Select\n%>", 1014, 3, true}));
// clang-format on

TEST(Errors, InCodeRunByExecuteNameTheLineThatRanIt) {
  testing::Outcome o = RunPage("<%\nx = 1\nExecute \"y = 1\" & vbCrLf & \"z = 1 / 0\"\n%>");
  EXPECT_EQ(o.number, 11);
  EXPECT_EQ(o.line, 3);
  o = RunPage("<%\n\nEval(\"1 +\")\n%>");
  EXPECT_EQ(o.number, 1023);
  EXPECT_EQ(o.line, 3);
}

TEST(Errors, CarryTheSourceLine) {
  testing::Outcome o = RunPage("<%\n  total = 10 / zero\n%>");
  EXPECT_EQ(o.sourceLine, "  total = 10 / zero");
  EXPECT_EQ(o.description, "Division by zero");
  o = RunPage("<% Option Explicit\nx = 1 %>");
  EXPECT_EQ(o.description, "Variable is undefined: 'x'");
}

struct Case {
  const char* code;
  const char* out;
};

class OnError : public ::testing::TestWithParam<Case> {};

TEST_P(OnError, ResumesWithTheNextStatement) {
  EXPECT_EQ(Output(GetParam().code), GetParam().out) << GetParam().code;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, OnError, ::testing::Values(
    Case{"On Error Resume Next\nx = 1 / 0\nW Err.Number & \" \" & Err.Description & \" \" & Err.Source",
         "11 Division by zero Microsoft VBScript runtime error"},
    Case{"On Error Resume Next\nx = 1 / 0\nW Err\nErr.Clear\nW Err.Number", "110"},
    Case{"On Error Resume Next\nErr.Raise 5000, \"me\", \"custom\"\nW Err.Number & Err.Source & Err.Description",
         "5000mecustom"},
    Case{"On Error Resume Next\nErr.Raise 9\nW Err.Description", "Subscript out of range"},
    Case{"Sub Fails: W \"a\": x = 1 / 0: W \"b\": End Sub\nOn Error Resume Next\nFails\nW \"c\" & Err.Number",
         "ac11"},
    Case{"On Error Resume Next\nx = 1 / 0\nOn Error GoTo 0\nW Err.Number\nx = 1 / 0\nW \"no\"", "0error 11"},
    Case{"On Error Resume Next\nIf 1 / 0 Then W \"then\" Else W \"else\"", "then"},
    Case{"Sub S: On Error Resume Next: x = 1 / 0: W \"in\": End Sub\nS\nx = 1 / 0\nW \"out\"", "inerror 11"},
    Case{"On Error Resume Next\nFor i = 1 To 3\n x = 1 / (i - 2)\n W i\nNext", "123"},
    Case{"On Error Resume Next\nExecute \"x = \"\nW Err.Number", "1023"},
    Case{"On Error Resume Next\nSet o = Nothing\no.Go\nW Err.Number & \" \" & Err.Description",
         "91 Object variable or With block variable not set"},
    Case{"On Error Resume Next\nx = CInt(\"a\")\nOn Error Resume Next\nW Err.Number", "0"},
    Case{"On Error Resume Next\nx = 1 / 0\nIf Err Then W \"failed \" & Err", "failed 11"},
    Case{"Sub S: Err.Raise 7: End Sub\nOn Error Resume Next\nS: W Err.Number\nS: W Err.Number", "77"},
    Case{"On Error Resume Next\nDo While 1 / 0: W \"in\": Exit Do: Loop\nW Err.Number", "11"}));
// clang-format on

TEST(Limits, DeepNestingIsACompileError) {
  std::string deep = "<% x = " + std::string(500, '(') + "1" + std::string(500, ')') + " %>";
  EXPECT_EQ(RunPage(deep).number, 28);
  std::string ifs;
  for (int i = 0; i < 300; ++i) ifs += "If 1 Then\n";
  for (int i = 0; i < 300; ++i) ifs += "End If\n";
  testing::Outcome o = RunPage("<%" + ifs + "%>");
  EXPECT_EQ(o.number, 28);
  EXPECT_TRUE(o.compile);
}

TEST(Limits, RunawayRecursionRunsOutOfStackSpace) {
  EXPECT_EQ(Output("Function F(n): F = F(n + 1): End Function\nx = F(1)"), "error 28");
  EXPECT_EQ(Output("On Error Resume Next\nFunction F(n): F = F(n + 1): End Function\nx = F(1)\nW Err.Number"),
            "28");
}

TEST(Limits, AnEndlessLoopStopsAtTheTimeLimit) {
  RunContext context;
  context.timeoutSeconds = [] { return 1; };
  testing::Outcome o = RunPage("<% On Error Resume Next\nDo\nLoop\nW 1 %>", std::move(context));
  EXPECT_EQ(o.number, -2147467259);
  EXPECT_EQ(o.description, "Script timed out");
}

TEST(Limits, TheTimeLimitIsAskedAgainWhileRunning) {
  // The page raises its own limit (Server.ScriptTimeout) before the first one runs out.
  int asked = 0;
  RunContext context;
  context.timeoutSeconds = [&asked] { return ++asked > 3 ? 0 : 1; };
  testing::Outcome o = RunPage("<% For i = 1 To 20000: x = x + 1: Next %><%= x %>", std::move(context));
  EXPECT_EQ(o.out, "20000");
  EXPECT_GT(asked, 3);
}

TEST(OptionExplicit, AcceptsWhatIsDeclaredAnywhere) {
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"Option Explicit\nDim a: a = 1: W a", "1"},
      {"Option Explicit\nSub S: Dim b: b = 2: W b: End Sub\nS", "2"},
      {"Option Explicit\nW later\nDim later", ""},
      {"Option Explicit\nReDim r(1): r(1) = 3: W r(1)", "3"},
      {"Option Explicit\nSub S: ReDim q(0): q(0) = 4: W q(0): End Sub\nS", "4"},
      {"Option Explicit\nExecuteGlobal \"Dim g\"\ng = 5\nW g", "5"},
      {"Option Explicit\nFor Each v In Array(1): Next", "error 500"},
      {"Option Explicit\nExecute \"h = 1\"", "error 500"},
      {"Option Explicit\nConst K = 6: W K", "6"},
  };
  // clang-format on
  for (auto [code, out] : cases) EXPECT_EQ(Output(code), out) << code;
}

TEST(Limits, PageEndPassesThroughOnError) {
  struct Ender : Dispatch {
    const ClassInfo& Info() const override {
      static const ClassInfo info{
          .className = "Response",
          .members = {Method<Ender>("End", 1, [](Ender&, Args&) { throw PageEnd{}; })}};
      return info;
    }
  };
  RunContext context;
  context.objects.emplace_back("Response", Variant(Object(std::make_shared<Ender>())));
  std::string out;
  context.write = [&out](std::string_view t) { out += t; };
  ScriptRun run(
      CompilePage("/p.asp", testing::LoaderOf({{"/p.asp", "a<% On Error Resume Next\nResponse.End %>b"}})),
      context);
  EXPECT_THROW(run.Run(), PageEnd);
  EXPECT_EQ(out, "a");
}

}  // namespace
}  // namespace corvane::script
