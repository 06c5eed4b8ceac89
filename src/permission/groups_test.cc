// Access groups and members: the group table, the saves and the rows they leave, the member check
// boxes, and the person's menu ids in the session.
#include <gtest/gtest.h>

#include <string>

#include "corvane/error.h"
#include "permission/permission_test_support.h"

namespace corvane {
namespace {

using testing::CreateOfficeSystem;
using testing::PermissionPage;
using testing::Rows;
using testing::ScratchDatabase;

class GroupsTest : public ::testing::Test {
 protected:
  GroupsTest() { CreateOfficeSystem(db); }
  std::string Rights(int group) const {
    return Rows(db, "select accessgroupid, accessmenutype, accessmenuid from accessMenu where accessgroupid=" +
                        std::to_string(group) + " order by rowid");
  }
  std::string Members(int group) const {
    return Rows(db, "select accessPersonID from accessPerson where accessGroupID=" + std::to_string(group) +
                        " order by rowid");
  }
  std::string AllRows() const {
    return Rows(db, "select * from AccessGroup") + "/" + Rows(db, "select * from accessMenu") + "/" +
           Rows(db, "select * from accessPerson");
  }

  ScratchDatabase db;
};

TEST_F(GroupsTest, DispGroupNumbersTheRowsAndLinksEachGroup) {
  PermissionPage p(db);
  EXPECT_EQ(p.permission->DispGroup().ToString(),
            "<tr><td align=center>1</td> <td>管理员</td><td align=center>"
            "<a href=\"permission.asp?ac=del&id=1\">删除</a>\u3000"
            "<a href=\"permission.asp?ac=edit&id=1\">修改</a>\u3000"
            "<a href=\"permissionset.asp?id=1\">设置权限</a>\u3000"
            "<a href=\"permissionMan.asp?id=1\">设置人员</a></td></tr>"
            "<tr><td align=center>2</td> <td>财务</td><td align=center>"
            "<a href=\"permission.asp?ac=del&id=2\">删除</a>\u3000"
            "<a href=\"permission.asp?ac=edit&id=2\">修改</a>\u3000"
            "<a href=\"permissionset.asp?id=2\">设置权限</a>\u3000"
            "<a href=\"permissionMan.asp?id=2\">设置人员</a></td></tr>"
            "<tr><td align=center>3</td> <td>办公</td><td align=center>"
            "<a href=\"permission.asp?ac=del&id=3\">删除</a>\u3000"
            "<a href=\"permission.asp?ac=edit&id=3\">修改</a>\u3000"
            "<a href=\"permissionset.asp?id=3\">设置权限</a>\u3000"
            "<a href=\"permissionMan.asp?id=3\">设置人员</a></td></tr>");
  EXPECT_EQ(p.page.Writes().size(), 0u) << "display methods return their HTML, they do not write it";
}

TEST_F(GroupsTest, DispGroupReadsTheSystemAtEachCall) {
  PermissionPage p(db);
  p.session.Set("systemID", Variant(2));
  EXPECT_EQ(p.permission->DispGroup().ToString(),
            "<tr><td align=center>1</td> <td>外部</td><td align=center>"
            "<a href=\"permission.asp?ac=del&id=4\">删除</a>\u3000"
            "<a href=\"permission.asp?ac=edit&id=4\">修改</a>\u3000"
            "<a href=\"permissionset.asp?id=4\">设置权限</a>\u3000"
            "<a href=\"permissionMan.asp?id=4\">设置人员</a></td></tr>");
  p.session.Set("systemID", Variant(3));
  Variant none = p.permission->DispGroup();
  EXPECT_EQ(none.Type(), vtString);
  EXPECT_EQ(none.ToString(), "");
}

TEST_F(GroupsTest, AddGroupInsertsIntoTheCurrentSystem) {
  PermissionPage p(db);
  p.session.Set("systemID", Variant(2));
  Variant name("新组");
  EXPECT_TRUE(p.permission->AddGroup(name).IsEmpty());
  EXPECT_EQ(Rows(db, "select accessGroupName, systemID from AccessGroup where accessGroupID=5"), "新组|2");

  Variant quoted("O'Brien");  // the name is pasted between quotes as it stands
  EXPECT_THROW(p.permission->AddGroup(quoted), Error);
  EXPECT_EQ(Rows(db, "select count(*) from AccessGroup"), "5");
}

TEST_F(GroupsTest, DelGroupDeletesOnlyInTheCurrentSystemAndLeavesRightsAndMembers) {
  PermissionPage p(db);
  Variant group2(2), group4(4);
  EXPECT_TRUE(p.permission->delGroup(group2).IsEmpty());
  p.permission->delGroup(group4);  // a group of system 2: untouched
  EXPECT_EQ(Rows(db, "select accessGroupID from AccessGroup"), "1;3;4");
  EXPECT_EQ(Rights(2), "2|1|3;2|1|4");
  EXPECT_EQ(Members(2), "2;3;12");
}

// Each list is saved over group 2, whose rights are 3 and 4 before.
struct SaveCase {
  const char* list;
  bool fails;
  const char* rowsAfter;
};

TEST_F(GroupsTest, SavePermissionReplacesTheRightsElementByElement) {
  const SaveCase cases[] = {
      {"3*7", false, "2|1|3;2|1|7"},
      {"8", false, "2|1|8"},
      {"", false, ""},              // no element: the rights are deleted, none inserted
      {"3**", true, "2|1|3"},       // the empty element fails after 3 went in
      {"*3", true, ""},             // a leading separator fails at once, after the delete
      {"5,6", true, ""},            // the wrong separator is one element, and no number
  };
  for (const SaveCase& c : cases) {
    SCOPED_TRACE(c.list);
    ScratchDatabase fresh;
    CreateOfficeSystem(fresh);
    PermissionPage p(fresh);
    Variant group(2), list(c.list);
    if (c.fails) {
      EXPECT_THROW(p.permission->SavePermission(group, list), Error);
    } else {
      EXPECT_EQ(p.permission->SavePermission(group, list).ToString(), "权限修改成功");
    }
    EXPECT_EQ(Rows(fresh, "select accessgroupid, accessmenutype, accessmenuid from accessMenu "
                          "where accessgroupid=2 order by rowid"),
              c.rowsAfter);
    EXPECT_EQ(Rows(fresh, "select count(*) from accessMenu where accessgroupid<>2"), "8");
  }
}

TEST_F(GroupsTest, SavePersonReplacesTheMembersElementByElement) {
  const SaveCase cases[] = {
      {"2,4", false, "2;4"},
      {"", false, ""},
      {"2,,", true, "2"},
      {"2 4", true, ""},            // one element that is no number
  };
  for (const SaveCase& c : cases) {
    SCOPED_TRACE(c.list);
    ScratchDatabase fresh;
    CreateOfficeSystem(fresh);
    PermissionPage p(fresh);
    Variant group(2), list(c.list);
    if (c.fails) {
      EXPECT_THROW(p.permission->SavePerson(group, list), Error);
    } else {
      EXPECT_EQ(p.permission->SavePerson(group, list).ToString(), "人员修改成功");
    }
    EXPECT_EQ(Rows(fresh, "select accessPersonID from accessPerson where accessGroupID=2 order by rowid"),
              c.rowsAfter);
    EXPECT_EQ(Rows(fresh, "select count(*) from accessPerson where accessGroupID<>2"), "4");
  }
}

TEST_F(GroupsTest, SavesWithAnEmptyGroupIdReturnTheFailureTextAndChangeNothing) {
  PermissionPage p(db);
  const std::string before = AllRows();
  for (Variant group : {Variant(""), Variant()}) {
    Variant list("3*7"), people("2,4");
    EXPECT_EQ(p.permission->SavePermission(group, list).ToString(), "权限修改失败");
    EXPECT_EQ(p.permission->SavePerson(group, people).ToString(), "人员修改失败");
  }
  EXPECT_EQ(AllRows(), before);
}

TEST_F(GroupsTest, DispPersonChecksTheMembersOfTheGroup) {
  PermissionPage p(db);
  Variant group(3);  // members 4 and " 11 ": person 1 is not matched inside ",4,11,"
  EXPECT_EQ(p.permission->DispPerson(group).ToString(),
            "<span>李四</span><input id=ci type='checkbox' name='checkbox' value='3' >"
            "<span>张三</span><input id=ci type='checkbox' name='checkbox' value='2' >"
            "<span class=checked>王五</span><input id=ci type='checkbox' name='checkbox' value='11'  checked >"
            "<span class=checked>钱七</span><input id=ci type='checkbox' name='checkbox' value='4'  checked >"
            "<span>sysop</span><input id=ci type='checkbox' name='checkbox' value='1' >");
}

TEST_F(GroupsTest, DispPersonNeverOffersPersonGroup7) {
  PermissionPage p(db);
  Variant group(2);  // members 2, 3 and 12; 12 is of person group 7
  const std::string html = p.permission->DispPerson(group).ToString();
  EXPECT_EQ(html.find("访客"), std::string::npos);
  EXPECT_EQ(html,
            "<span class=checked>李四</span><input id=ci type='checkbox' name='checkbox' value='3'  checked >"
            "<span class=checked>张三</span><input id=ci type='checkbox' name='checkbox' value='2'  checked >"
            "<span>王五</span><input id=ci type='checkbox' name='checkbox' value='11' >"
            "<span>钱七</span><input id=ci type='checkbox' name='checkbox' value='4' >"
            "<span>sysop</span><input id=ci type='checkbox' name='checkbox' value='1' >");
}

TEST_F(GroupsTest, DispPersonOfAnotherSystemAndAGroupWithoutMembers) {
  PermissionPage p(db);
  p.session.Set("systemID", Variant(2));
  Variant empty(99);
  EXPECT_EQ(p.permission->DispPerson(empty).ToString(),
            "<span>赵六</span><input id=ci type='checkbox' name='checkbox' value='20' >");
}

TEST_F(GroupsTest, GetPersonAccessRunsTheIdsOfSeveralGroupsTogether) {
  const struct {
    int person;
    const char* access;
  } cases[] = {
      {1, ""},          // in no group
      {3, "3,4"},       // one group
      {2, "1,23,4"},    // groups with 1,2 and 3,4: no separator between the groups
      {4, "1,3,5,9,7"},
      {20, "10"},       // the stored " 10 " is trimmed
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.person);
    PermissionPage p(db);
    p.session.Set("personID", Variant(c.person));
    p.permission->GetPersonAccess();
    Variant access = p.session.Get("personAccess");
    EXPECT_EQ(access.Type(), vtString);
    EXPECT_EQ(access.ToString(), c.access);
  }
}

}  // namespace
}  // namespace corvane
