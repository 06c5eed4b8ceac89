// Host objects from a script: default members, late-bound calls with arguments by reference,
// For Each over a collection, CreateObject; and the built-ins that reach into the interpreter.
#include <gtest/gtest.h>

#include <thread>

#include "script/script_test_support.h"

namespace corvane::script {
namespace {

using testing::Output;
using testing::WithBag;

struct Case {
  const char* code;
  const char* out;
};

class HostObjects : public ::testing::TestWithParam<Case> {};

TEST_P(HostObjects, AreCalledLateBound) {
  RunContext context = WithBag({Variant("a"), Variant(int32_t{2})});
  EXPECT_EQ(Output(GetParam().code, std::move(context)), GetParam().out) << GetParam().code;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, HostObjects, ::testing::Values(
    Case{"W Bag(0) & Bag.Item(1) & Bag.Count", "a22"},
    Case{"Bag(1) = \"z\"\nW Bag(1)", "z"},
    Case{"x = Bag\nW x", "error 449"},
    Case{"Bag.Add \"c\"\nFor Each v In Bag: W v: Next", "a2c"},
    Case{"n = 4\nBag.Double n\nW n", "8"},
    Case{"Dim a(1)\na(1) = 5\nBag.Double a(1)\nW a(1)", "10"},
    Case{"n = 4\nBag.Double (n)\nW n", "4"},
    Case{"Set b = CreateObject(\"Test.Bag\")\nb.Add 1\nW b.Count & TypeName(b)", "1Bag"},
    Case{"Set b = CreateObject(\"No.Such\")", "error 429"},
    Case{"Bag.Nothing 1", "error 438"},
    Case{"Set x = 5", "error 424"},
    Case{"x = 5\nx.Foo", "error 424"},
    Case{"Set x = Nothing\nW x.Count", "error 91"},
    Case{"For Each v In 5: Next", "error 451"},
    Case{"W Len(Bag(0)) & IsNull(Bag(0)) & VarType(Bag)", "1False9"}));
// clang-format on

TEST(HostObjects, CacheMembersPerClassAtEachCallSite) {
  // The same call site meets two classes: each finds its own member.
  RunContext context = WithBag({Variant("x")});
  EXPECT_EQ(Output("Class K: Public Count: End Class\nSet k = New K: k.Count = \"k\"\n"
                   "For Each o In Array(Bag, k, Bag): W o.Count: Next",
                   std::move(context)),
            "1k1");
}

class Intrinsics : public ::testing::TestWithParam<Case> {};

TEST_P(Intrinsics, ReachIntoTheRun) { EXPECT_EQ(Output(GetParam().code), GetParam().out) << GetParam().code; }

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, Intrinsics, ::testing::Values(
    Case{"x = 3\nW Eval(\"x * 2\") & Eval(\"x = 3\")", "6True"},
    Case{"Sub S: Dim y: y = 4: W Eval(\"y + 1\"): End Sub\nS", "5"},
    Case{"Execute \"z = 7\"\nW z", "7"},
    Case{"Sub S: Dim y: Execute \"y = 2\": W y: End Sub\nS", "2"},
    Case{"ExecuteGlobal \"Function Sq(n): Sq = n * n: End Function\"\nW Sq(5)", "25"},
    Case{"ExecuteGlobal \"Class D: Public V: End Class\"\nSet d = New D: d.V = 1: W d.V", "1"},
    Case{"ExecuteGlobal \"Sub Hi: W \"\"hi\"\": End Sub\"\nHi", "hi"},
    Case{"Execute \"x = \"", "error 1023"},
    Case{"Function Twice(n): Twice = n * 2: End Function\nSet f = GetRef(\"Twice\")\nW f(21)", "42"},
    Case{"Set f = GetRef(\"Nope\")", "error 5"},
    Case{"W TypeName(Empty) & TypeName(Null) & TypeName(1.5) & TypeName(Array()) & TypeName(Nothing)",
         "EmptyNullDoubleVariant()Nothing"},
    Case{"W VarType(\"s\") & VarType(1) & IsArray(Array()) & IsEmpty(x)", "82TrueTrue"}));
// clang-format on

TEST(ScriptRun, RunsOneCompiledPageOnManyThreads) {
  // The tree and its call-site caches are shared; each run has its own globals and Bag.
  auto page = CompilePage(
      "/p.asp", testing::LoaderOf({{"/p.asp",
                                    "<% Class K: Public Count: End Class\n"
                                    "Function Sum(n): If n = 0 Then Sum = 0 Else Sum = n + Sum(n - 1)\n"
                                    "End Function\nSet k = New K: k.Count = 1\n"
                                    "For i = 1 To 200: For Each o In Array(Bag, k): t = t + o.Count: "
                                    "Next: Next %><%= t & \",\" & Sum(50) %>"}}));
  std::vector<std::string> outs(4);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      RunContext context = WithBag(std::vector<Variant>(t + 1, Variant(1)));
      context.write = [&outs, t](std::string_view s) { outs[t] += s; };
      ScriptRun run(page, std::move(context));
      run.Run();
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(outs[t], std::to_string(200 * (t + 2)) + ",1275");
}

TEST(ScriptRun, HandsOutProceduresAndErrToTheHost) {
  auto page = CompileScript(
      "Function Add(a, b): Add = a + b: End Function\nSet f = GetRef(\"Add\")\n"
      "On Error Resume Next\nx = 1 / 0\nFunction Get(n): If n = 1 Then Set Get = f Else Set "
      "Get = Err\nEnd Function",
      "/x.vbs");
  ScriptRun run(page, {});
  run.Run();
  Object add = run.Call("Get", {Variant(int16_t{1})}).ToObject();
  Args args{Variant(int16_t{2}), Variant(int16_t{3})};
  EXPECT_EQ(add.Invoke(0, args).ToLong(), 5);
  EXPECT_EQ(add.get()->Info().className, "Object");
  Object err = run.Call("Get", {Variant(int16_t{2})}).ToObject();
  EXPECT_EQ(err.Get("Number").ToLong(), 11);
  EXPECT_EQ(err.Get("Description").ToString(), "Division by zero");
  err.Invoke("Clear");
  EXPECT_EQ(err.Get("Number").ToLong(), 0);
}

TEST(ScriptRun, CallsProceduresAfterTheRun) {
  auto page =
      CompileScript("Dim n\nn = 1\nSub Session_OnStart(ByRef x): x = x + n: End Sub\n", "/global.asa", 3);
  ScriptRun run(page, {});
  run.Run();
  EXPECT_TRUE(run.HasProcedure("session_onstart"));
  EXPECT_FALSE(run.HasProcedure("Application_OnStart"));
  EXPECT_EQ(run.Call("Session_OnStart", {Variant(int16_t{41})}).Type(), vtEmpty);
  try {
    run.Call("Missing");
    FAIL();
  } catch (const ScriptError& e) {
    EXPECT_EQ(e.Number(), 35);
  }
}

TEST(ScriptRun, WritesThroughResponseWithoutAWriter) {
  auto bag = std::make_shared<testing::Bag>();
  struct Sink : Dispatch {
    std::string text;
    const ClassInfo& Info() const override {
      static const ClassInfo info{
          .className = "Response",
          .members = {Method<Sink>("Write", 1, [](Sink& s, Args& a) { s.text += a[0].Text(); })}};
      return info;
    }
  };
  auto sink = std::make_shared<Sink>();
  RunContext context;
  context.objects.emplace_back("Response", Variant(Object(sink)));
  ScriptRun run(
      CompilePage("/p.asp", testing::LoaderOf({{"/p.asp", "a<%= 1 + 1 %>b<% Response.Write \"c\" %>"}})),
      context);
  run.Run();
  EXPECT_EQ(sink->text, "a2bc");
}

}  // namespace
}  // namespace corvane::script
