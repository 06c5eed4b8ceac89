// Script classes: fields, properties, default members, Me, Initialize and Terminate, and their
// instances passed around as objects.
#include <gtest/gtest.h>

#include "script/script_test_support.h"

namespace corvane::script {
namespace {

using testing::Output;

const char* kCounter = R"(
Class Counter
  Private m_count
  Public Name
  Public Items()
  Private Sub Class_Initialize(): m_count = 0: Name = "c": ReDim Items(1): W "[init]": End Sub
  Private Sub Class_Terminate(): W "[term " & Name & "]": End Sub
  Public Property Get Count: Count = m_count: End Property
  Public Property Let Count(v): m_count = v: End Property
  Public Default Function Add(n): m_count = m_count + n: Set Add = Me: End Function
  Public Sub Twice(ByRef n): n = n * 2: End Sub
  Private Function Secret(): Secret = 42: End Function
  Public Function Reveal(): Reveal = Secret() + Me.Secret(): End Function
End Class
)";

struct Case {
  const char* code;
  const char* out;
};

class Classes : public ::testing::TestWithParam<Case> {};

TEST_P(Classes, BehaveAsObjects) {
  EXPECT_EQ(Output(std::string(kCounter) + GetParam().code), GetParam().out) << GetParam().code;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, Classes, ::testing::Values(
    Case{"Set c = New Counter\nc.Count = 5\nc.Add 2\nW c.Count", "[init]7[term c]"},
    Case{"Set c = New Counter\nW c(3).Add(4).Count", "[init]7[term c]"},
    Case{"Set c = New Counter\nc.Name = \"n\"\nSet c = Nothing\nW \"/\"", "[init][term n]/"},
    Case{"Sub Make: Dim c: Set c = New Counter: c.Name = \"local\": End Sub\nMake\nW \"/\"", "[init][term local]/"},
    Case{"Set a = New Counter\nSet b = a\nSet a = Nothing\nW \"/\": Set b = Nothing", "[init]/[term c]"},
    Case{"Set c = New Counter\nW TypeName(c) & IsObject(c) & (c Is c) & (c Is New Counter)",
         "[init][init]CounterTrueTrueFalse[term c][term c]"},
    Case{"Set c = New Counter\nx = 3\nc.Twice x\nW x", "[init]6[term c]"},
    Case{"Set c = New Counter\nW c.Reveal()", "[init]84[term c]"},
    Case{"Set c = New Counter\nW c.Secret()", "[init][term c]error 438"},
    Case{"Set c = New Counter\nc.Items(1) = \"i\"\nW c.Items(1) & UBound(c.Items)", "[init]i1[term c]"},
    Case{"Set c = New Counter\nWith c\n .Count = 2\n .Add 3\n W .Count\nEnd With", "[init]5[term c]"},
    Case{"Set c = New Counter\nc.Count = New Counter", "[init][init][term c][term c]error 450"},
    Case{"Set c = New Unknown", "error 506"},
    Case{"Set c = New Counter\nc = 5", "[init][term c]"}));
// clang-format on

const char* kList = R"(
Class List
  Private items(), n
  Private Sub Class_Initialize(): ReDim items(-1): n = 0: End Sub
  Public Default Property Get Item(i)
    If IsObject(items(i)) Then Set Item = items(i) Else Item = items(i)
  End Property
  Public Property Let Item(i, v): items(i) = v: End Property
  Public Property Set Item(i, v): Set items(i) = v: End Property
  Public Property Get Count: Count = n: End Property
  Public Sub Add(v)
    ReDim Preserve items(n)
    If IsObject(v) Then Set items(n) = v Else items(n) = v
    n = n + 1
  End Sub
  Public Function Sum()
    Dim i: For i = 0 To n - 1: Sum = Sum + items(i): Next
  End Function
  Public Function Self(): Set Self = Me: End Function
  Public Function Peek(name): Peek = Eval(name): End Function
End Class
Class Node
  Public Value, Next_
End Class
)";

class Properties : public ::testing::TestWithParam<Case> {};

TEST_P(Properties, TakeArgumentsAndObjects) {
  EXPECT_EQ(Output(std::string(kList) + GetParam().code), GetParam().out) << GetParam().code;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Scripts, Properties, ::testing::Values(
    Case{"Set l = New List: l.Add 1: l.Add 2: l(1) = 5: W l(0) + l.Item(1) & l.Count", "62"},
    Case{"Set l = New List: l.Add 3: l.Add 4: W l.Sum()", "7"},
    Case{"Set l = New List: l.Add 1: Set l(0) = New Node: l(0).Value = \"v\": W l(0).Value", "v"},
    Case{"Set l = New List: W l.Self().Self().Count", "0"},
    Case{"Set l = New List: l.Add 9: W l.Peek(\"n\") & l.Peek(\"items(0)\")", "19"},
    Case{"Set a = New Node: Set a.Next_ = New Node: a.Next_.Value = 2: W a.Next_.Value", "2"},
    Case{"Set l = New List: W l(5)", "error 9"},
    Case{"Set l = New List: l.Count = 3", "error 450"},
    Case{"Set l = New List: x = l.Add", "error 450"},
    Case{"Dim arr(1): Set arr(0) = New Node: arr(0).Value = 1: W arr(0).Value + 1", "2"},
    Case{"Sub Fill(n): n.Value = \"filled\": End Sub\nSet x = New Node: Fill x: W x.Value", "filled"},
    Case{"Set x = New Node: x.Value = 1: Set y = x: y.Value = 2: W x.Value", "2"},
    Case{"Set l = New List\nWith l\n .Add 1\n With New Node\n  .Value = 5\n  l.Add .Value\n End With\n W .Count & .Sum()\nEnd With",
         "26"},
    Case{"ExecuteGlobal \"Class Late: Public V: End Class\"\nSet o = New Late: o.V = 4: W TypeName(o) & o.V", "Late4"}));
// clang-format on

TEST(Classes, AreObjectsToTheHost) {
  // The host calls an instance late-bound, by name and through its default member.
  std::string out;
  auto page = CompileScript(
      std::string(kCounter) +
          "Sub W(v): End Sub\nSet c = New Counter\nc.Count = 10\nFunction Make(): Set Make = c: "
          "End Function",
      "/x.vbs");
  RunContext context;
  ScriptRun run(page, context);
  run.Run();
  Object o = run.Call("Make").ToObject();
  EXPECT_EQ(o.Get("Count").ToLong(), 10);
  Args args{Variant(int16_t{5})};
  o.Invoke(0, args);
  EXPECT_EQ(o.Get("Count").ToLong(), 15);
  EXPECT_EQ(o.get()->Info().className, "Counter");
  EXPECT_FALSE(o.Has("Secret"));
}

TEST(Classes, OutliveTheirRunQuietly) {
  // An instance kept by the host after its run ended: its members refuse, it goes without
  // Class_Terminate, and nothing breaks.
  Object kept;
  std::string out;
  {
    RunContext context;
    context.write = [&out](std::string_view t) { out += t; };
    auto page = CompileScript(std::string(kCounter) +
                                  "Sub W(v): Response_Write v: End Sub\nSub Response_Write(v)\nEnd Sub\n"
                                  "Function Make(): Set Make = New Counter: End Function",
                              "/x.vbs");
    ScriptRun run(page, context);
    run.Run();
    kept = run.Call("Make").ToObject();
    EXPECT_EQ(kept.Get("Name").ToString(), "c");
    kept.Put("Name", Variant("renamed"));
    EXPECT_EQ(kept.Get("Name").ToString(), "renamed");
    Args twice{Variant(int16_t{4})};
    kept.Invoke("Twice", twice);
    EXPECT_EQ(twice[0].ToLong(), 8);
    EXPECT_THROW(kept.Invoke("Secret"), Error);
  }
  try {
    kept.Get("Count");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), -2147418113);
  }
  kept = Object();
}

TEST(Classes, RefuseBadDefinitions) {
  // clang-format off
  const std::pair<const char*, int> cases[] = {
      {"Class A\nPublic Default Sub X: End Sub\nPublic Default Function Y: End Function\nEnd Class", 1052},
      {"Class A\nPrivate Sub Class_Initialize(x): End Sub\nEnd Class", 1053},
      {"Class A\nProperty Let P: End Property\nEnd Class", 1054},
      {"Class A\nDim x\nDim x\nEnd Class", 1041},
      {"Property Get P: End Property", 1048},
      {"Class A\nx = 1\nEnd Class", 1014},
  };
  // clang-format on
  for (auto [code, number] : cases) {
    testing::Outcome o = testing::RunPage(std::string("<%") + code + "%>");
    EXPECT_EQ(o.number, number) << code;
    EXPECT_TRUE(o.compile) << code;
  }
}

}  // namespace
}  // namespace corvane::script
