// The class registry: creation by ProgID or CLSID, every class's table, the entry points.
#include <gtest/gtest.h>

#include <set>

#include "corvane/corvane.h"
#include "registration/entry_points.h"  // the entry points are not in the public headers
#include "test_support.h"

namespace corvane {
namespace {

using testing::ErrorNumber;

TEST(Registry, CreatesByProgIDOrClsidAnyCase) {
  for (const char* name : {"corvane.aspHttp", "CORVANE.ASPHTTP", "{D9A09344-E9E5-42C0-9F54-AB9C93D40186}",
                           "d9a09344-e9e5-42c0-9f54-ab9c93d40186"})
    EXPECT_EQ(CreateObject(name).get()->Info().className, "aspHttp") << name;
  try {
    CreateObject("corvane.Nothing");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 429);
    EXPECT_EQ(e.Source(), "corvane.Nothing");
  }
}

// Every registered class: unique identities, and in its table unique names and dispatch ids, each
// member reachable late-bound. A member is called with no arguments: whatever it raises then, it must
// not be "no such member" (438), which would mean the table lists a member it cannot call.
TEST(Registry, EveryClassHasUniqueIdentitiesAndCallableMembers) {
  std::set<std::string> identities;
  for (const ClassInfo* c : RegisteredClasses()) {
    SCOPED_TRACE(c->progID);
    EXPECT_TRUE(identities.insert(LCase(c->progID)).second);
    EXPECT_TRUE(identities.insert(LCase(c->clsid)).second);
    EXPECT_TRUE(identities.insert(LCase(c->iid)).second);
    std::set<int32_t> dispids;
    std::set<std::string> names;
    for (const MemberInfo& m : c->members) {
      EXPECT_TRUE(names.insert(LCase(m.name)).second) << m.name;
      EXPECT_TRUE(dispids.insert(m.dispid).second) << m.name;
      EXPECT_EQ(c->DispIdOf(m.name), m.dispid) << m.name;
      if (m.name == "OnEndPage") continue;  // called on a fresh object it has nothing to release
      InvokeKind kind = m.Answers(InvokeKind::Method) ? InvokeKind::Method : InvokeKind::PropertyPut;
      Object o = CreateObject(c->progID);
      Args none;
      EXPECT_NE(ErrorNumber([&] { o.Invoke(m.dispid, none, kind); }), 438) << m.name;
    }
  }
}

TEST(EntryPoints, ClassFactoriesByClsid) {
  const ClassInfo* factory = nullptr;
  EXPECT_EQ(DllGetClassObject("{d9a09344-e9e5-42c0-9f54-ab9c93d40186}", &factory), 0);
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory->progID, "corvane.aspHttp");
  EXPECT_EQ(static_cast<uint32_t>(DllGetClassObject("{00000000-0000-0000-0000-000000000000}", &factory)),
            0x80040111u);
  EXPECT_EQ(factory, nullptr);
  EXPECT_EQ(DllRegisterServer(), 0);
  Object held = CreateObject("corvane.aspHttp");
  EXPECT_EQ(DllCanUnloadNow(), 1);
}

}  // namespace
}  // namespace corvane
