// Permission on a page of a small office system: its member table, the Session property and the
// trace line, the group table and the member check boxes, the rows that writes leave, and the menus.
#include "permission/permission.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "corvane/ado.h"
#include "corvane/host.h"
#include "test_support.h"

namespace corvane::testing {
namespace {

// A Permission object created through Server.CreateObject and connected to a small office system;
// the session holds "systemID" 1, and system 3 is empty.
//   menus (menuOrder sorts siblings,     groups:  1 管理员  rights 1, " 2 "          members 2
//   4 is stored before 3)                         2 财务    rights 3, 4              members 2, 3, 12
//     1 办公                                      3 办公    rights 1, 3, 5, 9, 7     members 4, " 11 "
//       3 公文                           persons by DutyID: 12 访客 (person group 7), 3 李四, 2 张三,
//         5 收文                           11 王五, 4 钱七, 1 sysop
//           9 归档 (level 4)
//       4 日程                           accessmenuid and accessPersonID are text, and two values carry
//     2 系统                             blanks, as the deployment's fixed-width columns do.
//       7 用户
struct PermissionTest : ::testing::Test {
  PermissionTest() {
    db.Run({
        "create table AccessGroup (accessGroupID integer primary key, accessGroupName, systemID)",
        "create table accessMenu (accessgroupid, accessmenutype, accessmenuid varchar(10))",
        "create table accessPerson (accessGroupID, accessPersonID varchar(10))",
        "create table person (personID integer primary key, personName, systemID, personGroupID, DutyID)",
        "create table menu (menuID integer primary key, menuName, menuFatherID, menuOrder, systemID)",
        "insert into AccessGroup values (1, '管理员', 1), (2, '财务', 1), (3, '办公', 1)",
        "insert into accessMenu values (1, 1, '1'), (1, 1, ' 2 '), (2, 1, '3'), (2, 1, '4'), (3, 1, '1'), "
        "(3, 1, '3'), (3, 1, '5'), (3, 1, '9'), (3, 1, '7')",
        "insert into accessPerson values (1, '2'), (2, '2'), (2, '3'), (2, '12'), (3, '4'), (3, ' 11 ')",
        "insert into person values (1, 'sysop', 1, 1, 5), (2, '张三', 1, 2, 2), (3, '李四', 1, 2, 1), "
        "(4, '钱七', 1, 3, 4), (11, '王五', 1, 3, 3), (12, '访客', 1, 7, 0)",
        "insert into menu values (1, '办公', null, 1, 1), (2, '系统', null, 2, 1), (4, '日程', 1, 2, 1), "
        "(3, '公文', 1, 1, 1), (5, '收文', 3, 1, 1), (9, '归档', 5, 1, 1), (7, '用户', 2, 1, 1)",
    });
    session.Set("systemID", Variant(1));
    obj.Invoke("openDB", {Variant(db.connectionString)});
  }

  // The rows of a query as "a;b;c".
  std::string Rows(std::string_view sql) const {
    ado::Recordset rs;
    rs.Open(sql, Variant(db.connectionString), ado::adOpenKeyset);
    std::string out;
    for (; !rs.Eof(); rs.MoveNext()) out += (out.empty() ? "" : ";") + rs.Field(0).Text();
    return out;
  }

  ScratchDatabase db;
  host::Session session;
  host::Page page{host::PageRequest{.url = "/permission.asp"}, session, LibraryHost()};
  Object obj = page.Server().CreateObject("corvane.Permission");
};

TEST_F(PermissionTest, MemberTableSessionPropertyAndTraceLine) {
  // The Session property, then the methods in the order of their dispids.
  const char* names[] = {"Session",    "DispMenuItem",    "DispAccessMenuItem", "DispGroup",
                         "AddGroup",   "delGroup",        "SavePermission",     "SavePerson",
                         "DispPerson", "GetPersonAccess", "GetMenu1",           "GetMenu23"};
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(PermissionClass().DispIdOf(names[i]), (i ? 0x60030003 : 0x40030003) + i) << names[i];

  host::Session other;
  other.Set("personID", Variant(1));  // in no group
  obj.PutRef("Session", other.AsVariant());
  obj.Invoke("GetPersonAccess");
  EXPECT_EQ(other.Get("personAccess"), Variant(""));
  EXPECT_EQ(ErrorNumber([&] { obj.PutRef("Session", Variant(CreateObject("ADODB.Recordset"))); }), 13);
  EXPECT_EQ(ErrorNumber([&] { obj.Put("Session", session.AsVariant()); }), 438);  // set only

  // The span is written though the debug switch is off; openDB wrote nothing before it.
  obj.Invoke("PrintDebug", {Variant("#组:3<br>\r\n")});
  EXPECT_EQ(page.Output(), "<span id=debugID style='display:none'>#组:3<br>\r\n</span>");
  page.End();  // the host objects are let go
  EXPECT_EQ(ErrorNumber([&] { obj.Invoke("PrintDebug", {Variant("x")}); }), 91);
}

// Group 3's members are 4 and " 11 ": person 1 is not matched inside ",4,11,", and person 12 is never
// offered. The system is read at each call. Every save deletes the group's rows first, then inserts
// element by element with no transaction.
TEST_F(PermissionTest, GroupsAndMembers) {
  EXPECT_EQ(obj.Invoke("DispGroup"), Variant(Golden("src/permission/golden/group_rows.html")));
  EXPECT_EQ(obj.Invoke("DispPerson", {Variant(3)}), Variant(Golden("src/permission/golden/members.html")));
  // What a save returns, then the rights and the members of group 2 after it.
  auto save = [&](const char* method, Variant group, const char* list) {
    Variant result;
    if (ErrorNumber([&] { result = obj.Invoke(method, {group, Variant(list)}); })) result = Variant("fails");
    return result.ToString() + " " + Rows("select accessmenuid from accessMenu where accessgroupid=2") + "/" +
           Rows("select accessPersonID from accessPerson where accessGroupID=2");
  };
  EXPECT_EQ(save("SavePermission", Variant(""), "3*7"), "权限修改失败 3;4/2;3;12");
  EXPECT_EQ(save("SavePerson", Variant(), "2,4"), "人员修改失败 3;4/2;3;12");
  EXPECT_EQ(save("SavePermission", Variant(2), "3*7"), "权限修改成功 3;7/2;3;12");
  EXPECT_EQ(save("SavePerson", Variant("2"), "2,4"), "人员修改成功 3;7/2;4");
  EXPECT_EQ(save("SavePermission", Variant(2), ""), "权限修改成功 /2;4");
  EXPECT_EQ(save("SavePermission", Variant(2), "3**"), "fails 3/2;4");  // on the empty element, after 3
  obj.Invoke("delGroup", {Variant(2)});
  session.Set("systemID", Variant(3));
  EXPECT_EQ(obj.Invoke("DispGroup"), Variant(""));
  EXPECT_EQ(obj.Invoke("DispPerson", {Variant(3)}), Variant(""));
  EXPECT_EQ(obj.Invoke("DispMenuItem"), Variant(""));
  obj.Invoke("delGroup", {Variant(3)});  // of system 1: kept
  obj.Invoke("AddGroup", {Variant("新组")});
  EXPECT_EQ(Rows("select accessGroupName || systemID from AccessGroup"), "管理员1;办公1;新组3");
  // The deleted group's rights stay, each of the type 1.
  EXPECT_EQ(Rows("select count(*) from accessMenu where accessmenutype=1"), "8");
}

// Group 3 holds 1, 3, 5, 9 (level 4) and 7, whose parent 2 it does not hold. Person 2's groups hold
// 1, " 2 " and 3, 4, which "personAccess" runs together as 1,23,4. Only the name "sysop" as it
// stands sees every menu.
TEST_F(PermissionTest, MenuTreeAndPersonMenus) {
  EXPECT_EQ(obj.Invoke("DispMenuItem"), Variant(Golden("src/permission/golden/menu_tree.html")));
  EXPECT_EQ(obj.Invoke("DispAccessMenuItem", {Variant("3")}),
            Variant("<option value=\"1\">●办公</option><option value=\"3\">\u3000\u3000○公文</option>"
                    "<option value=\"5\">\u3000\u3000\u3000◎收文</option>"));
  // The texts of GetMenu1 and GetMenu23 for an ordinary person, then for the superuser.
  const char* sql[2][2] = {
      {" Select * from Menu where  menuFatherID is null and menuid in (1,23,4) and systemID  =1 "
       "order by menuOrder ",
       "select * from Menu where  menufatherID=3 and  menuid in (1,23,4) and  systemID=1 order by menuOrder"},
      {" Select * from Menu where  menuFatherID is null  and systemID  =1 order by menuOrder ",
       "select * from Menu where  menufatherID=3 and  systemID=1 order by menuOrder"}};
  session.Set("personID", Variant(2));
  obj.Invoke("GetPersonAccess");
  for (auto [name, sysop] : {std::pair{"sysop", 1}, {"Sysop", 0}, {"sysop ", 0}}) {
    session.Set("personName", Variant(name));
    Args rs1{Variant(CreateObject("ADODB.Recordset"))};
    obj.Invoke("GetMenu1", rs1);
    EXPECT_EQ(rs1[0].ToObject().As<ado::Recordset>()->Source(), sql[sysop][0]) << name;
    EXPECT_EQ(obj.Invoke("GetMenu23", {Variant(3)}).ToObject().As<ado::Recordset>()->Source(), sql[sysop][1]);
  }
}

}  // namespace
}  // namespace corvane::testing
