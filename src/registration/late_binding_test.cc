#include <gtest/gtest.h>

#include <set>

#include "corvane/corvane.h"
#include "runtime/args.h"

namespace corvane {
namespace {

// A class with a method that changes its by-reference argument, a property, and an optional argument.
class Counter : public Dispatch {
 public:
  static const ClassInfo& Class() {
    static const ClassInfo info{.className = "Counter", .members = {{"Bump", 1}, {"Total", 2}, {"Add", 3}}};
    return info;
  }
  const ClassInfo& Info() const override { return Class(); }
  Variant InvokeMember(int32_t id, InvokeKind kind, Args& args) override {
    switch (id) {
      case 1: {
        Variant& v = RefArg(args, 0);
        v = Variant(v.ToLong() + 1);
        return {};
      }
      case 2:
        if (IsPropertyWrite(kind)) total = args.back().ToLong();
        return Variant(total);
      case 3: {
        const Variant& by = OptionalArg(args, 1);
        total += Arg(args, 0).ToLong() * (by.IsMissing() ? 1 : by.ToLong());
        return Variant(total);
      }
    }
    throw Error::NoSuchMember(std::to_string(id));
  }
  int32_t total = 0;
};

TEST(LateBinding, ByReferenceArgumentsAreWrittenBack) {
  Object o(std::make_shared<Counter>());
  Args args{Variant(41)};
  o.Invoke("bump", args);  // any case
  EXPECT_EQ(args[0].ToLong(), 42);
  o.Invoke(1, args);
  EXPECT_EQ(args[0].ToLong(), 43);
}

TEST(LateBinding, PropertiesAndOptionalArguments) {
  Object o(std::make_shared<Counter>());
  o.Put("TOTAL", Variant(5));
  EXPECT_EQ(o.Get("Total").ToLong(), 5);
  EXPECT_EQ(o.Invoke("Add", {Variant(2)}).ToLong(), 7);
  EXPECT_EQ(o.Invoke("Add", {Variant(2), Variant(10)}).ToLong(), 27);
  EXPECT_EQ(o.As<Counter>()->total, 27);
}

TEST(LateBinding, UnknownMembersAndNothing) {
  Object o(std::make_shared<Counter>());
  try {
    o.Invoke("Nope");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 438);
  }
  Args args;
  EXPECT_THROW(o.Invoke(99, args), Error);
  try {
    Object().Invoke("Bump");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 91);
  }
  try {
    o.Invoke("Bump");  // by-reference argument missing
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 449);
  }
}

TEST(Registry, CreatesByProgIDOrClsidAnyCase) {
  EXPECT_FALSE(CreateObject("corvane.aspHttp").IsNothing());
  EXPECT_FALSE(CreateObject("CORVANE.ASPHTTP").IsNothing());
  EXPECT_FALSE(CreateObject("{D9A09344-E9E5-42C0-9F54-AB9C93D40186}").IsNothing());
  EXPECT_FALSE(CreateObject("d9a09344-e9e5-42c0-9f54-ab9c93d40186").IsNothing());
  EXPECT_EQ(CreateObject("corvane.aspHttp").get()->Info().members.size(), 0u);
  try {
    CreateObject("corvane.Nothing");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 429);
    EXPECT_EQ(e.Source(), "corvane.Nothing");
  }
}

TEST(Registry, EveryClassHasUniqueIdentitiesAndMemberIds) {
  std::set<std::string> ids;
  for (const ClassInfo* c : RegisteredClasses()) {
    EXPECT_TRUE(ids.insert(std::string(c->progID)).second) << c->progID;
    EXPECT_TRUE(ids.insert(LCase(c->clsid)).second) << c->clsid;
    EXPECT_TRUE(c->create) << c->progID;
    std::set<int32_t> dispids;
    std::set<std::string> names;
    for (const MemberInfo& m : c->members) {
      // A property's get and put share one entry; a name appears once.
      EXPECT_TRUE(names.insert(LCase(m.name)).second) << c->progID << "." << m.name;
      dispids.insert(m.dispid);
    }
  }
}

}  // namespace
}  // namespace corvane

#include "registration/entry_points.h"

namespace corvane {
namespace {

TEST(EntryPoints, ClassFactoriesByClsid) {
  const ClassInfo* factory = nullptr;
  EXPECT_EQ(DllGetClassObject("{d9a09344-e9e5-42c0-9f54-ab9c93d40186}", &factory), 0);
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory->progID, "corvane.aspHttp");
  EXPECT_EQ(static_cast<uint32_t>(DllGetClassObject("{00000000-0000-0000-0000-000000000000}", &factory)),
            0x80040111u);
  EXPECT_EQ(factory, nullptr);
  EXPECT_EQ(DllRegisterServer(), 0);
  {
    Object held = CreateObject("corvane.aspHttp");
    EXPECT_EQ(DllCanUnloadNow(), 1);
  }
}

}  // namespace
}  // namespace corvane
