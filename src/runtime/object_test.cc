// Late binding through a class's member table: names in any case, ids, by-reference arguments,
// properties, optional arguments, and the errors of a call that finds nothing.
#include "corvane/object.h"

#include <gtest/gtest.h>

#include "runtime/members.h"
#include "test_support.h"

namespace corvane {
namespace {

using testing::ErrorNumber;

class Counter : public Dispatch {
 public:
  const ClassInfo& Info() const override {
    static const ClassInfo info{
        .className = "Counter",
        .members = {
            Method<Counter>("Bump", 1, [](Counter&, Args& a) { RefArg(a, 0) = Variant(RefArg(a, 0).ToLong() + 1); }),
            Property<&Counter::total>("Total", 2),
            Method<Counter>("Add", 3,
                            [](Counter& c, Args& a) {
                              const Variant& by = OptionalArg(a, 1);
                              c.total += Arg(a, 0).ToLong() * (by.IsMissing() ? 1 : by.ToLong());
                              return c.total;
                            }),
            Reader<Counter>("Twice", 4, [](Counter& c) { return 2 * c.total; }),
        }};
    return info;
  }
  int32_t total = 0;
};

TEST(LateBinding, ByReferenceArgumentsPropertiesAndOptionalArguments) {
  Object o(std::make_shared<Counter>());
  Args args{Variant(41)};
  o.Invoke("bump", args);  // any case
  EXPECT_EQ(args[0].ToLong(), 42);
  o.Invoke(1, args);
  EXPECT_EQ(args[0].ToLong(), 43);
  o.Put("TOTAL", Variant("5"));  // converted as the member's type converts
  EXPECT_EQ(o.Get("Total"), Variant(5));
  EXPECT_EQ(o.Invoke("Add", {Variant(2)}).ToLong(), 7);
  EXPECT_EQ(o.Invoke("Add", {Variant(2), Variant(10)}).ToLong(), 27);
  EXPECT_EQ(o.Get("Twice").ToLong(), 54);
}

TEST(LateBinding, CallsThatFindNothing) {
  Object o(std::make_shared<Counter>());
  Args none;
  const struct {
    const char* what;
    std::function<void()> call;
    int32_t number;
  } cases[] = {
      {"unknown name", [&] { o.Invoke("Nope"); }, 438},
      {"unknown id", [&] { o.Invoke(99, none); }, 438},
      {"write to a method", [&] { o.Put("Bump", Variant(1)); }, 438},
      {"write to a read-only property", [&] { o.Put("Twice", Variant(1)); }, 438},
      {"call on Nothing", [&] { Object().Invoke("Bump"); }, 91},
      {"by-reference argument missing", [&] { o.Invoke("Bump"); }, 449},
      {"property write without a value", [&] { o.Invoke(2, none, InvokeKind::PropertyPut); }, 449},
  };
  for (const auto& c : cases) EXPECT_EQ(ErrorNumber(c.call), c.number) << c.what;
}

}  // namespace
}  // namespace corvane
