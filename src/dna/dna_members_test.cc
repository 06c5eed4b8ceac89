// DNA as the registry and a scripting host see it: identity, dispatch ids, properties, page attachment.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "dna/dna_test_support.h"
#include "test_support.h"

namespace corvane::testing {
namespace {

using corvane::testing::ErrorNumber;

TEST(DNAClass, IdentityAndPublishedDispatchIds) {
  const ClassInfo* c = FindClass("CORVANE.dna");
  ASSERT_EQ(c, &DNAClass());
  EXPECT_EQ(FindClass("{EAB29593-9DE1-41EB-B481-708F425344A5}"), c);
  EXPECT_EQ(c->iid, "{5d09a460-4161-495c-bd92-b65003c43635}");
  const std::vector<std::pair<std::string, int32_t>> published = {
      {"strAction", 0x40030006},      {"nAccessLevel", 0x40030007},   {"nPage", 0x40030008},
      {"nPageSize", 0x40030009},      {"strItemKeyName", 0x40030014}, {"nItemKeyValue", 0x40030015},
      {"strItemEnglish", 0x40030016}, {"strItemChinese", 0x40030017}, {"strItemCodeSQL", 0x40030018}};
  for (const auto& [name, id] : published) EXPECT_EQ(c->DispIdOf(name), id) << name;
  // Methods are numbered in declaration order; private procedures take numbers but are not members.
  EXPECT_EQ(c->DispIdOf("OnStartPage"), 0x60030000);
  EXPECT_EQ(c->DispIdOf("OpenDNA"), 0x60030006);
  EXPECT_EQ(c->DispIdOf("DispMenu"), 0x6003001E);
  for (const char* hidden : {"GetParam", "GetRequestValue", "GetPageBar", "GetListRows", "ReadFieldTypes", "WriteTrace"})
    EXPECT_EQ(c->DispIdOf(hidden), -1) << hidden;
  std::set<int32_t> ids;
  for (const MemberInfo& m : c->members) EXPECT_TRUE(ids.insert(m.dispid).second) << m.name;
  EXPECT_EQ(c->members.size(), 30u);
}

TEST(DNAClass, PropertiesKeepTheirTypes) {
  Object dna = CreateObject("corvane.DNA");
  EXPECT_EQ(dna.Get("nAccessLevel"), Variant(int16_t{0}));
  dna.Put("nPage", Variant("12"));
  EXPECT_EQ(dna.Get("nPage"), Variant(int16_t{12}));
  dna.Put("nAccessLevel", Variant(2.5));
  EXPECT_EQ(dna.Get("nAccessLevel"), Variant(int16_t{2}));  // rounded half to even
  EXPECT_EQ(ErrorNumber([&] { dna.Put("nPage", Variant(40000)); }), 6);
  EXPECT_EQ(ErrorNumber([&] { dna.Put("nPageSize", Variant("x")); }), 13);
  EXPECT_EQ(ErrorNumber([&] { dna.Put("strAction", Variant::Null()); }), 94);
  dna.Put("strItemCodeSQL", Variant(5));
  EXPECT_EQ(dna.Get("strItemCodeSQL"), Variant("5"));
  Object rs = CreateObject("ADODB.Recordset");
  dna.PutRef("nItemKeyValue", Variant(rs));
  EXPECT_EQ(dna.Get("nItemKeyValue").ToObject(), rs);
  dna.Put("nItemKeyValue", Variant(int16_t{7}));
  EXPECT_EQ(dna.Get("nItemKeyValue"), Variant(int16_t{7}));
}

TEST(DNAClass, PageAttachment) {
  Object loose = CreateObject("corvane.DNA");
  EXPECT_EQ(ErrorNumber([&] { loose.Invoke("DebugMode"); }), 91);  // no response before OnStartPage
  EXPECT_EQ(ErrorNumber([&] { loose.Invoke("DispSetColumns"); }), 91);

  StaffDatabase db;
  host::Session session;
  host::Page page(host::PageRequest{.url = "/staff.asp"}, session, corvane::testing::LibraryHost());
  Object dna = page.Server().CreateObject("corvane.DNA");
  // The field lists are never sized before OpenDNA.
  EXPECT_EQ(ErrorNumber([&] { dna.Invoke("DispSetColumns"); }), 9);
  Args open{Variant(db.connectionString), Variant(kStaffSQL), Variant("")};
  dna.Invoke("OpenDNA", open);
  const size_t before = page.Output().size();
  dna.Invoke("DebugMode");
  dna.Invoke("CloseDNA");
  dna.Invoke("CloseDNA");  // nothing to close, still traced
  const std::string closed = "<span id=debugID style='display:none'>##调试信息:关闭数据库 OK!<br>\r\n</span>";
  EXPECT_EQ(page.Output().substr(before), "<span id=debugID style='display:none'>##调试信息:进入调试模式<br>\r\n</span>" + closed + closed);
  page.End();
  EXPECT_EQ(session.Get("strURL"), Variant("/staff.asp"));
  EXPECT_EQ(ErrorNumber([&] { dna.Invoke("DispMenu"); }), 91);  // released at page end
}

TEST(DNAClass, LateBoundMethodsWithReferenceArguments) {
  StaffDatabase db;
  host::Session session;
  session.Set("strURL", Variant("/staff.asp"));
  host::Page page(host::PageRequest{.url = "/staff.asp", .queryString = "action=delete&id=2"}, session, corvane::testing::LibraryHost());
  Object dna = page.Server().CreateObject("corvane.DNA");
  Args open{Variant(db.connectionString), Variant(kStaffSQL), Variant(kStaffCaptions)};
  dna.Invoke("opendna", open);  // names are matched case-insensitively
  Args rs{Variant(CreateObject("ADODB.Recordset"))};
  dna.Invoke("GetList", rs);
  EXPECT_EQ(rs[0].ToObject().As<ado::Recordset>()->Field("name"), Variant("张三"));
  EXPECT_EQ(dna.Invoke("GetCodeName", {Variant("select deptName,deptID from dept"), Variant(1)}), Variant("办公室"));
  EXPECT_EQ(dna.Invoke("Delete"), Variant(true));
  EXPECT_EQ(db.Count(), 4);
  EXPECT_EQ(ErrorNumber([&] { dna.Invoke("SetTitle"); }), 449);
  EXPECT_EQ(ErrorNumber([&] { dna.Invoke("NoSuchMethod"); }), 438);
}

}  // namespace
}  // namespace corvane::testing
