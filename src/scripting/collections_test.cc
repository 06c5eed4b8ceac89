// Scripting.Dictionary and System.Collections.ArrayList through late binding: which keys and values
// count as the same, order, the errors, and sorting as the platform sorts.
#include <gtest/gtest.h>

#include "corvane/variant.h"
#include "runtime/members.h"
#include "runtime/runtime_test_support.h"
#include "scripting/scripting.h"

namespace corvane::scripting {
namespace {

using testing::ErrorNumber;

Variant I(int v) { return Variant(static_cast<int16_t>(v)); }
Variant Array(std::vector<Variant> v) { return Variant::FromArray(VariantArray::Of(std::move(v))); }

std::string Joined(const std::vector<Variant>& values) {
  std::string out;
  for (const Variant& v : values) out += (out.empty() ? "" : ",") + (v.IsEmpty() ? "<e>" : v.Text());
  return out;
}

std::string Joined(const Variant& array) { return Joined(array.ArrayPtr()->Elements()); }

TEST(Dictionary, KeysAreTheSameByKindAndValue) {
  Object d = DictionaryClass().create();
  Object other = DictionaryClass().create();
  for (const Variant& key : {I(1), Variant("a"), Variant(), Variant::Null(), Variant(Object(other)),
                             Variant::Date(2026, 1, 2), Variant(true)})
    d.Invoke("Add", {key, Variant("x")});
  // clang-format off
  const struct { Variant key; bool exists; } cases[] = {
      {Variant(int32_t{1}), true}, {Variant(1.0), true}, {Variant("1"), false}, {Variant("A"), false},
      {Variant(""), false},        {Variant(0), false},  {Variant(Object(DictionaryClass().create())), false},
      {Variant(46024.0), false},   {Variant(-1), false},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(d.Invoke("Exists", {c.key}), Variant(c.exists)) << DebugString(c.key);
  EXPECT_EQ(d.Get("Count"), Variant(7));

  Object text = DictionaryClass().create();
  text.Put("CompareMode", Variant(1));
  text.Invoke("Add", {Variant("Key"), Variant(1)});
  EXPECT_EQ(text.Invoke("Exists", {Variant("KEY")}), Variant(true));
  EXPECT_EQ(ErrorNumber([&] { text.Invoke("Add", {Variant("kEy"), Variant(2)}); }), 457);
  EXPECT_EQ(ErrorNumber([&] { text.Put("CompareMode", Variant(0)); }), 5);  // not while it holds keys
  EXPECT_EQ(ErrorNumber([&] { d.Invoke("Exists", {Array({I(1)})}); }), 13);
}

TEST(Dictionary, ItemsKeysOrderAndErrors) {
  Object d = DictionaryClass().create();
  d.Invoke("Add", {Variant("b"), I(1)});
  d.Invoke("Add", {Variant("a"), I(2)});
  Args key{Variant("new")};
  EXPECT_TRUE(d.Get("Item", key).IsEmpty());  // reading an absent key adds it
  EXPECT_EQ(d.Get("Count"), Variant(3));
  Args write{Variant("a"), Variant("two")};
  d.Invoke(0, write, InvokeKind::PropertyPut);
  Args put{Variant("c"), Variant(Object(d))};
  d.Invoke(0, put, InvokeKind::PropertyPutRef);
  Args rename{Variant("b"), Variant("B")};
  d.Invoke(d.get()->Info().DispIdOf("Key"), rename, InvokeKind::PropertyPut);
  d.Invoke("Remove", {Variant("new")});
  d.Invoke("Add", {Variant("new"), I(4)});
  EXPECT_EQ(Joined(d.Invoke("Keys")), "B,a,c,new");
  EXPECT_EQ(Joined(d.get()->Elements()), "B,a,c,new");
  EXPECT_EQ(d.Invoke("Items").ArrayPtr()->Elements()[1], Variant("two"));
  EXPECT_EQ(d.Invoke("Items").ArrayPtr()->Elements()[2].ToObject(), d);

  auto raised = [&](const char* member, Args args, InvokeKind kind = InvokeKind::Method) {
    return ErrorNumber([&] { d.Invoke(d.get()->Info().DispIdOf(member), args, kind); });
  };
  EXPECT_EQ(raised("Add", {Variant("a"), I(0)}), 457);
  EXPECT_EQ(raised("Remove", {Variant("zz")}), 32811);
  EXPECT_EQ(raised("Key", {Variant("zz"), Variant("y")}, InvokeKind::PropertyPut), 32811);
  EXPECT_EQ(raised("Key", {Variant("a"), Variant("c")}, InvokeKind::PropertyPut), 457);
  EXPECT_EQ(raised("Key", {Variant("a")}, InvokeKind::PropertyGet), 438);  // Key is written only
  d.Invoke("RemoveAll");
  EXPECT_EQ(d.Get("Count"), Variant(0));
  EXPECT_EQ(Joined(d.Invoke("Keys")), "");
}

std::string Outcome(Object list, const char* member, Args args) {
  return testing::Outcome([&] { return list.Invoke(member, args).Text(); });
}

TEST(ArrayList, IndexesAndEqualityAsDotNet) {
  Object l = ArrayListClass().create();
  for (const Variant& v : {I(1), Variant("a"), Variant(), I(1)}) l.Invoke("Add", {v});
  EXPECT_EQ(l.Invoke("Add", {Variant(2.5)}), Variant(4));
  // clang-format off
  const struct { const char* member; Args args; std::string want; } cases[] = {
      {"Contains", {I(1)}, "True"},  {"Contains", {Variant(1)}, "False"}, {"Contains", {Variant("1")}, "False"},
      {"IndexOf", {Variant()}, "2"}, {"IndexOf", {Variant("A")}, "-1"},   {"Item", {I(4)}, "2.5"},
      {"Item", {I(5)}, "#-2146233086"}, {"Item", {I(-1)}, "#-2146233086"}, {"Insert", {I(6), I(0)}, "#-2146233086"},
      {"RemoveAt", {I(5)}, "#-2146233086"},
  };
  // clang-format on
  for (const auto& c : cases) EXPECT_EQ(Outcome(l, c.member, c.args), c.want) << c.member;
  l.Invoke("Insert", {I(5), Variant("end")});
  l.Invoke("Insert", {I(0), Variant("start")});
  l.Invoke("Remove", {I(1)});  // the first only
  l.Invoke("RemoveAt", {I(0)});
  Args set{I(0), Variant("A")};
  l.Invoke(0, set, InvokeKind::PropertyPut);
  EXPECT_EQ(Joined(l.get()->Elements()), "A,<e>,1,2.5,end");
  l.Invoke("Reverse");
  EXPECT_EQ(Joined(l.Invoke("ToArray")), "end,2.5,1,<e>,A");
  l.Invoke("Clear");
  EXPECT_EQ(l.Get("Count"), Variant(0));
}

TEST(ArrayList, SortsNumbersTextsAndDatesAsThePlatform) {
  auto sorted = [](std::vector<Variant> values) {
    Object l = ArrayListClass().create();
    for (const Variant& v : values) l.Invoke("Add", {v});
    const int n = ErrorNumber([&] { l.Invoke("Sort"); });
    return (n ? "#" + std::to_string(n) + " " : "") + Joined(l.get()->Elements());
  };
  EXPECT_EQ(sorted({Variant(10), I(9), Variant(2.5), Variant(), Variant::FromByte(3)}), "<e>,2.5,3,9,10");
  EXPECT_EQ(sorted({Variant("b"), Variant("B"), Variant("a"), Variant("A"), Variant("10"), Variant("9"),
                    Variant("ab"), Variant("中")}),
            "10,9,a,A,ab,b,B,中");
  EXPECT_EQ(sorted({Variant::Date(2026, 2, 1), Variant::Date(2025, 12, 31)}), "2025-12-31,2026-02-01");
  EXPECT_EQ(sorted({Variant(true), Variant(false)}), "False,True");
  // A text and a number do not compare; the list stays as it was.
  EXPECT_EQ(sorted({Variant("b"), I(1), Variant("a")}), "#-2146233079 b,1,a");
}

}  // namespace
}  // namespace corvane::scripting
