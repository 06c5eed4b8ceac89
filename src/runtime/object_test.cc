// Late binding through a class's member table: names in any case, ids, by-reference arguments,
// properties, optional arguments, and the errors of a call that finds nothing.
#include "corvane/object.h"

#include <gtest/gtest.h>

#include <functional>

#include "runtime/members.h"
#include "runtime_test_support.h"

namespace corvane {

struct Counter : Dispatch {
  int32_t total = 0;
  const ClassInfo& Info() const override {
    static const ClassInfo info{
        .className = "Counter",
        .members = {
            Method<Counter>("Bump", 1, [](Counter&, Args& a) { RefArg(a, 0) = RefArg(a, 0).ToLong() + 1; }),
            Property<&Counter::total>("Total", 2),
            Method<Counter>("Add", 3,
                            [](Counter& c, Args& a) {  // Add(n[, times])
                              return c.total += Arg(a, 0).ToLong() *
                                                (OptionalArg(a, 1).IsMissing() ? 1 : Arg(a, 1).ToLong());
                            }),
            Reader<Counter>("Twice", 4, [](Counter& c) { return 2 * c.total; })}};
    return info;
  }
};

TEST(LateBinding, CallsByNameOrIdWithTheirArgumentsAndTheErrorsOfCallsThatFindNothing) {
  Object o(std::make_shared<Counter>());
  Args args{41}, none;
  // Each call runs in turn on the same object; `want` is its result as Type:Text, or the error raised.
  // By reference, in any case, then by id; a write converted to the member's type (CLng rounds 5.5 to
  // 6); an optional argument left out and given; a read-only property. Then calls that find nothing: an
  // unknown name, an unknown id, a write to a method or a read-only property (438); a call on Nothing
  // (91); a by-reference argument left out or Missing, a property write without a value (449).
  // clang-format off
  const struct { std::function<Variant()> call; const char* want; } cases[] = {
      {[&] { o.Invoke("bump", args); return args[0]; }, "3:42"},
      {[&] { o.Invoke(1, args); return args[0]; }, "3:43"},
      {[&] { o.Put("TOTAL", "5.5"); return o.Get("Total"); }, "3:6"},
      {[&] { return o.Invoke("Add", {2}); }, "3:8"}, {[&] { return o.Invoke("Add", {2, 10}); }, "3:28"},
      {[&] { return o.Get("Twice"); }, "3:56"}, {[&] { return o.Invoke("Nope"); }, "#438"},
      {[&] { return o.Invoke(99, none); }, "#438"}, {[&] { o.Put("Bump", 1); return Variant(); }, "#438"},
      {[&] { o.Put("Twice", 1); return Variant(); }, "#438"},
      {[&] { return Object().Invoke("Bump"); }, "#91"}, {[&] { return o.Invoke("Bump"); }, "#449"},
      {[&] { return o.Invoke("Bump", {Variant::Missing()}); }, "#449"},
      {[&] { return o.Invoke(2, none, InvokeKind::PropertyPut); }, "#449"},
  };
  // clang-format on
  for (const auto& c : cases)
    EXPECT_EQ(testing::Outcome([&] { return DebugString(c.call()); }), c.want) << "case " << &c - cases;
}

// An object where a value is wanted gives its default member's value (dispatch id 0), as a field of a
// recordset does in "Response.Write rs(\"name\")"; an object without one, or Nothing, is a mismatch.
struct Cell : Dispatch {
  Variant value;
  const ClassInfo& Info() const override {
    static const ClassInfo info{.className = "Cell",
                                .members = {Reader<Cell>("Value", 0, [](Cell& c) { return c.value; })}};
    return info;
  }
};

TEST(LateBinding, ObjectsConvertThroughTheirDefaultMember) {
  auto cell = std::make_shared<Cell>();
  cell->value = "12";
  Variant v{Object(cell)};
  EXPECT_EQ(v.ToString(), "12");
  EXPECT_EQ(v.ToLong(), 12);
  EXPECT_EQ(v.Text(), "12");
  EXPECT_TRUE(v.ToBool());
  cell->value = Variant::Null();
  EXPECT_EQ(v.Text(), "");
  EXPECT_EQ(testing::Outcome([&] { return v.ToString(); }), "#94");
  Variant counter{Object(std::make_shared<Counter>())};
  EXPECT_EQ(testing::Outcome([&] { return counter.Text(); }), "#13");
  EXPECT_EQ(testing::Outcome([&] { return Variant(Object()).Text(); }), "#13");
}

}  // namespace corvane
