// Permission on a page: attachment, the Session property, the trace line, the connection, and the
// late-bound calls a scripted page makes.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "corvane/registry.h"
#include "corvane/error.h"
#include "permission/permission_test_support.h"
#include "test_support.h"

namespace corvane {
namespace {

using testing::CreateOfficeSystem;
using testing::PermissionPage;
using testing::Rows;
using testing::ScratchDatabase;

using corvane::testing::ErrorNumber;

TEST(PermissionClassTest, IsRegisteredWithItsIdentityAndDispids) {
  const ClassInfo* info = FindClass("{CC80CF41-6EB7-401C-94CE-EA80508C1FAB}");
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->progID, "corvane.Permission");
  EXPECT_EQ(info->iid, "{c102ad68-952f-4f2c-ad4a-104c630d343b}");
  const struct {
    const char* name;
    int32_t dispid;
  } documented[] = {
      {"Session", 0x40030003},         {"DispMenuItem", 0x60030004}, {"DispAccessMenuItem", 0x60030005},
      {"DispGroup", 0x60030006},       {"AddGroup", 0x60030007},     {"delGroup", 0x60030008},
      {"SavePermission", 0x60030009},  {"SavePerson", 0x6003000a},   {"DispPerson", 0x6003000b},
      {"GetPersonAccess", 0x6003000c}, {"GetMenu1", 0x6003000d},     {"GetMenu23", 0x6003000e},
  };
  for (const auto& m : documented) EXPECT_EQ(info->DispIdOf(m.name), m.dispid) << m.name;
  // The undocumented members follow the documented ones without colliding.
  for (const char* name : {"OnStartPage", "OnEndPage", "openDB", "PrintDebug"}) {
    const int32_t id = info->DispIdOf(name);
    EXPECT_GT(id, 0x6003000e) << name;
    EXPECT_EQ(info->Member(id)->name, name);
  }
}

TEST(PermissionPageTest, TheSessionIsThePagesUntilThePageEnds) {
  ScratchDatabase db;
  CreateOfficeSystem(db);
  PermissionPage p(db);
  EXPECT_EQ(p.obj.Get("Session").ToObject(), p.session.AsObject());
  EXPECT_EQ(p.permission->Session().ToObject(), p.session.AsObject());

  p.page.End();
  EXPECT_TRUE(p.permission->Session().ToObject().IsNothing());
  EXPECT_EQ(ErrorNumber([&] { p.permission->DispGroup(); }), 91);
  Variant x("x");
  EXPECT_EQ(ErrorNumber([&] { p.permission->PrintDebug(x); }), 91);
}

TEST(PermissionPageTest, PrintDebugWritesTheHiddenSpanAlways) {
  host::Session session;
  host::Page page(host::PageRequest{.url = "/permission.asp"}, session, corvane::testing::LibraryHost());
  Object obj = page.Server().CreateObject("corvane.Permission");
  obj.Invoke("PrintDebug", {Variant("#组:3<br>\r\n")});
  obj.Invoke("PrintDebug", {Variant(int16_t{7})});
  EXPECT_EQ(page.Writes(), (std::vector<std::string>{
                               "<span id=debugID style='display:none'>#组:3<br>\r\n</span>",
                               "<span id=debugID style='display:none'>7</span>",
                           }));
}

TEST(PermissionPageTest, MethodsNeedAnOpenConnection) {
  host::Session session;
  session.Set("systemID", Variant(1));
  host::Page page(host::PageRequest{.url = "/permission.asp"}, session, corvane::testing::LibraryHost());
  Object obj = page.Server().CreateObject("corvane.Permission");
  EXPECT_EQ(ErrorNumber([&] { obj.Invoke("DispGroup"); }), 91);
  EXPECT_NE(ErrorNumber([&] { obj.Invoke("openDB", {Variant("Provider=Nothing;Data Source=x")}); }), 0);
  EXPECT_EQ(ErrorNumber([&] { obj.Invoke("openDB", {Variant::Null()}); }), 94);
  EXPECT_TRUE(page.Writes().empty()) << "openDB traces nothing";
}

TEST(PermissionPageTest, SetSessionByReferenceRedirectsEveryRead) {
  ScratchDatabase db;
  CreateOfficeSystem(db);
  PermissionPage p(db);
  host::Session other;
  other.Set("systemID", Variant(2));
  other.Set("personID", Variant(20));

  p.obj.PutRef("Session", other.AsVariant());
  EXPECT_EQ(p.obj.Get("Session").ToObject(), other.AsObject());
  EXPECT_NE(p.obj.Invoke("DispGroup").ToString().find("外部"), std::string::npos);
  p.obj.Invoke("GetPersonAccess");
  EXPECT_EQ(other.Get("personAccess").ToString(), "10");
  EXPECT_TRUE(p.session.Get("personAccess").IsEmpty());

  // Only a session object (or Nothing) can be set, and only by reference.
  EXPECT_EQ(ErrorNumber([&] { p.obj.PutRef("Session", Variant(CreateObject("ADODB.Recordset"))); }), 13);
  EXPECT_EQ(ErrorNumber([&] { p.obj.Put("Session", p.session.AsVariant()); }), 438);
  p.obj.PutRef("Session", Variant(Object()));
  EXPECT_TRUE(p.obj.Get("Session").ToObject().IsNothing());
  EXPECT_EQ(ErrorNumber([&] { p.obj.Invoke("DispGroup"); }), 91);
}

TEST(PermissionPageTest, LateBoundSavesAndDisplays) {
  ScratchDatabase db;
  CreateOfficeSystem(db);
  PermissionPage p(db);
  EXPECT_EQ(p.obj.Invoke("SavePermission", {Variant("2"), Variant("4*6")}).ToString(), "权限修改成功");
  EXPECT_EQ(p.obj.Invoke("SavePerson", {Variant(""), Variant("2")}).ToString(), "人员修改失败");
  EXPECT_EQ(Rows(db, "select accessmenuid from accessMenu where accessgroupid=2"), "4;6");
  // The group id of DispAccessMenuItem is a 16-bit integer: text converts, a non-number does not.
  EXPECT_EQ(p.obj.Invoke("DispAccessMenuItem", {Variant("1")}).ToString(),
            "<option value=\"1\">●办公</option><option value=\"2\">●系统</option>");
  EXPECT_EQ(ErrorNumber([&] { p.obj.Invoke("DispAccessMenuItem", {Variant("abc")}); }), 13);
  EXPECT_EQ(ErrorNumber([&] { p.obj.Invoke("DispAccessMenuItem", {Variant(40000)}); }), 6);
  EXPECT_EQ(ErrorNumber([&] { p.obj.Invoke("DispPerson"); }), 449);
}

TEST(PermissionPageTest, LateBoundMenusThroughACreatedRecordset) {
  ScratchDatabase db;
  CreateOfficeSystem(db);
  PermissionPage p(db);
  p.session.Set("personName", Variant("钱七"));
  p.session.Set("personID", Variant(4));
  p.obj.Invoke("GetPersonAccess");

  // As a scripted page: Set rs = Server.CreateObject("ADODB.Recordset"): obj.GetMenu1 rs
  Args args{Variant(CreateObject("ADODB.Recordset"))};
  EXPECT_TRUE(p.obj.Invoke("GetMenu1", args).IsEmpty());
  Object rs1 = args[0].ToObject();
  auto field = [](const Object& rs, const char* name) {
    Args key{Variant(name)};
    return rs.Get("Fields", key).ToObject().Get("Value").Text();
  };
  std::string walk;
  for (; !rs1.Get("EOF").ToBool(); rs1.Invoke("MoveNext")) {
    walk += field(rs1, "menuName") + ":";
    Object rs2 = p.obj.Invoke("GetMenu23", {Variant(field(rs1, "menuID"))}).ToObject();
    for (; !rs2.Get("EOF").ToBool(); rs2.Invoke("MoveNext")) walk += field(rs2, "menuName") + ",";
  }
  EXPECT_EQ(walk, "办公:公文,");
}

}  // namespace
}  // namespace corvane
