// The menu tree: the option lists of the group-rights page, and the menus a person gets, walked as
// the site's navigation page walks them.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ado/recordset_impl.h"
#include "corvane/registry.h"
#include "corvane/error.h"
#include "permission/permission_test_support.h"

namespace corvane {
namespace {

using testing::CreateOfficeSystem;
using testing::PermissionPage;
using testing::ScratchDatabase;

class MenusTest : public ::testing::Test {
 protected:
  MenusTest() { CreateOfficeSystem(db); }

  // Signs a person in as the site's sign-in does: name and menu ids in the session.
  std::unique_ptr<PermissionPage> SignIn(const char* personName, const char* personAccess) {
    auto p = std::make_unique<PermissionPage>(db);
    p->session.Set("personName", Variant(personName));
    p->session.Set("personAccess", Variant(personAccess));
    return p;
  }

  ScratchDatabase db;
};

// The navigation page: level 1 from GetMenu1, then GetMenu23 for each entry's children and again
// for each child's. One line per entry, indented by level: " 3 公文".
std::string WalkMenus(Permission& permission) {
  std::string out;
  auto level1 = std::make_shared<ado::Recordset>();
  Variant rs1(Object{level1});
  permission.GetMenu1(rs1);
  for (; !level1->Eof(); level1->MoveNext()) {
    out += level1->Field("menuID").Text() + " " + level1->Field("menuName").Text() + "\n";
    auto level2 = permission.GetMenu23(level1->Field("menuID")).ToObject().As<ado::Recordset>();
    for (; !level2->Eof(); level2->MoveNext()) {
      out += " " + level2->Field("menuID").Text() + " " + level2->Field("menuName").Text() + "\n";
      auto level3 = permission.GetMenu23(level2->Field("menuID")).ToObject().As<ado::Recordset>();
      for (; !level3->Eof(); level3->MoveNext())
        out += "  " + level3->Field("menuID").Text() + " " + level3->Field("menuName").Text() + "\n";
    }
  }
  return out;
}

TEST_F(MenusTest, DispMenuItemListsTheWholeTreeDepthFirst) {
  PermissionPage p(db);
  EXPECT_EQ(p.permission->DispMenuItem().ToString(),
            "<option value=\"1\">●办公</option>"
            "<option value=\"3\">\u3000\u3000○公文</option>"
            "<option value=\"5\">\u3000\u3000\u3000◎收文</option>"
            "<option value=\"6\">\u3000\u3000\u3000◎发文</option>"
            "<option value=\"4\">\u3000\u3000○日程</option>"
            "<option value=\"2\">●系统</option>"
            "<option value=\"7\">\u3000\u3000○用户</option>"
            "<option value=\"8\">\u3000\u3000\u3000◎密码</option>");
}

TEST_F(MenusTest, DispMenuItemOfOtherSystems) {
  PermissionPage p(db);
  p.session.Set("systemID", Variant(2));
  EXPECT_EQ(p.permission->DispMenuItem().ToString(), "<option value=\"10\">●其他</option>");
  p.session.Set("systemID", Variant(3));
  EXPECT_EQ(p.permission->DispMenuItem().ToString(), "");
}

TEST_F(MenusTest, DispAccessMenuItemShowsHeldEntriesUnderHeldParentsOnly) {
  PermissionPage p(db);
  // Group 3 holds 1, 3, 5, 9 (level 4) and 7 (whose parent 2 it does not hold).
  int16_t group = 3;
  EXPECT_EQ(p.permission->DispAccessMenuItem(group).ToString(),
            "<option value=\"1\">●办公</option>"
            "<option value=\"3\">\u3000\u3000○公文</option>"
            "<option value=\"5\">\u3000\u3000\u3000◎收文</option>");
  group = 2;  // 3 and 4, both under the unheld 1
  EXPECT_EQ(p.permission->DispAccessMenuItem(group).ToString(), "");
  group = 1;  // only the two level-1 entries
  EXPECT_EQ(p.permission->DispAccessMenuItem(group).ToString(),
            "<option value=\"1\">●办公</option><option value=\"2\">●系统</option>");
}

TEST_F(MenusTest, TheSuperuserGetsEveryMenuOfTheSystemDownToLevel3) {
  auto p = SignIn("sysop", "");
  EXPECT_EQ(WalkMenus(*p->permission),
            "1 办公\n 3 公文\n  5 收文\n  6 发文\n 4 日程\n"
            "2 系统\n 7 用户\n  8 密码\n");
}

TEST_F(MenusTest, AnOrdinaryPersonGetsTheHeldMenusUnderHeldParents) {
  auto p = SignIn("钱七", "1,3,5,9,7");
  EXPECT_EQ(WalkMenus(*p->permission), "1 办公\n 3 公文\n  5 收文\n");
}

TEST_F(MenusTest, IdsRunTogetherAcrossGroupsNameOtherMenus) {
  // Groups with 1,2 and 3,4 give "1,23,4": menu 2 and menu 3 are lost, 23 names nothing.
  auto p = SignIn("张三", "");
  p->session.Set("personID", Variant(2));
  p->permission->GetPersonAccess();
  EXPECT_EQ(WalkMenus(*p->permission), "1 办公\n 4 日程\n");
}

TEST_F(MenusTest, TheSuperuserNameIsComparedExactly) {
  auto p = SignIn("Sysop", "2");
  EXPECT_EQ(WalkMenus(*p->permission), "2 系统\n");
  p->session.Set("personName", Variant("sysop "));
  EXPECT_EQ(WalkMenus(*p->permission), "2 系统\n");
}

// The menu queries of a person are opened as written, doubled blanks included.
TEST_F(MenusTest, GetMenu1AndGetMenu23OpenTheirQueriesAsWritten) {
  const struct {
    const char* personName;
    const char* menu1;
    const char* menu23;
  } cases[] = {
      {"sysop",
       " Select * from Menu where  menuFatherID is null  and systemID  =1 order by menuOrder ",
       "select * from Menu where  menufatherID=3 and  systemID=1 order by menuOrder"},
      {"钱七",
       " Select * from Menu where  menuFatherID is null and menuid in (1,23,4) and systemID  =1 order by menuOrder ",
       "select * from Menu where  menufatherID=3 and  menuid in (1,23,4) and  systemID=1 order by menuOrder"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.personName);
    auto p = SignIn(c.personName, "1,23,4");
    auto rs1 = std::make_shared<ado::Recordset>();
    Variant arg(Object{rs1});
    p->permission->GetMenu1(arg);
    EXPECT_EQ(rs1->Source(), c.menu1);
    auto rs23 = p->permission->GetMenu23(Variant("3")).ToObject().As<ado::Recordset>();
    EXPECT_EQ(rs23->Source(), c.menu23);
  }
}

TEST_F(MenusTest, GetMenu23OfAnEntryWithoutChildrenIsAtItsEndAtOnce) {
  auto p = SignIn("sysop", "");
  Variant rs = p->permission->GetMenu23(Variant(6));
  auto recordset = rs.ToObject().As<ado::Recordset>();
  ASSERT_TRUE(recordset);
  EXPECT_TRUE(recordset->IsOpen());
  EXPECT_TRUE(recordset->Eof());
}

TEST_F(MenusTest, GetMenu1WantsARecordset) {
  auto p = SignIn("sysop", "");
  Variant nothing{Object()};
  EXPECT_THROW(p->permission->GetMenu1(nothing), Error);
  Variant connection(CreateObject("ADODB.Connection"));
  try {
    p->permission->GetMenu1(connection);
    ADD_FAILURE() << "a Connection is no Recordset";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 13);
  }
}

}  // namespace
}  // namespace corvane
