// A user's way through a table page over many requests that share one session: sorting, paging,
// choosing columns, leaving and coming back, adding, changing, searching and deleting.
#include <gtest/gtest.h>

#include <regex>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

// The staff page of the site, written as such a page is: set up, command bar, then by action.
std::string StaffPage(const StaffDatabase& db, host::Session session, const std::string& query,
                      const std::string& body = "") {
  DnaPage p(session, query, body);
  p.Open(db, "select id,name,dept,pay from staff where pay>0 order by pay,id", "编号,姓名,部门,工资");
  DNA& dna = p.dna();
  dna.SetCodeSQL(Variant("id;name;select deptName,deptID from dept;pay"));
  dna.SetTitle(Variant("职工"));
  dna.SetDispStyle(Variant(1));
  dna.DispMenu();
  const std::string action = dna.strAction;
  if (action == "insert" || action == "update" || action == "search") {
    Variant a(action);
    dna.DispForm(a);
  } else if (action == "insert2") {
    dna.Insert();
  } else if (action == "setcol") {
    dna.DispSetColumns();
  } else {
    if (action == "update2") dna.Update();
    if (action == "search2") dna.search();
    if (action == "delete") dna.Delete();
    dna.DispList();
  }
  return p.End();
}

// Another page of the site that uses the class on another table.
void OtherPage(const StaffDatabase& db, host::Session session) {
  DnaPage p(session, "", "", "/dept.asp");
  p.Open(db, "select deptID,deptName from dept", "");
  p.dna().DispList();
  p.End();
}

// The keys of the listed rows, in order, from their hidden edit links.
std::vector<std::string> Keys(const std::string& page) {
  std::vector<std::string> keys;
  static const std::regex edit("action=update&id=([0-9]+)' id=updateID");
  for (std::sregex_iterator it(page.begin(), page.end(), edit), end; it != end; ++it) keys.push_back((*it)[1]);
  return keys;
}
using K = std::vector<std::string>;

bool Has(const std::string& page, const std::string& text) { return page.find(text) != std::string::npos; }

TEST(UserSession, SortPageChooseLeaveAndReturn) {
  StaffDatabase db;
  host::Session session;
  OtherPage(db, session);

  // Arriving from another page: the default sort is cleared again, so this view is unsorted.
  std::string page = StaffPage(db, session, "");
  EXPECT_EQ(Keys(page), K({"1", "2", "3", "4", "5"}));
  EXPECT_EQ(session.Get("strSQL"), Variant("select id,name,dept,pay from staff where pay>0"));
  EXPECT_TRUE(page.starts_with("<link rel=\"stylesheet\" href=\"../include/style.css\" type=\"text/css\">"
                               "<table cellspading=0 cellspacing=4 width=100%><tr>\r\n"
                               "<td width=100% class=title>职工&nbsp;</td><td nowrap>\r\n"));
  EXPECT_TRUE(Has(page, "<td>办公室&nbsp;</td><td>3000&nbsp;</td>"));

  // From the next view on, the default sort by pay is in force.
  page = StaffPage(db, session, "page=1");
  EXPECT_EQ(Keys(page), K({"3", "1", "2", "5", "4"}));
  EXPECT_TRUE(Has(page, "工资 <span id=ctrlDiv><font size=-2>▲</font></span>"));

  // One heading clicked three times: ascending, descending, ascending; pay becomes the secondary sort.
  page = StaffPage(db, session, "action=list&page=1&order=name");
  EXPECT_EQ(Keys(page), K({"1", "2", "3", "4", "5"}));
  EXPECT_TRUE(Has(page, "姓名 <span id=ctrlDiv><font size=-2>▲</font></span>"));
  EXPECT_TRUE(Has(page, "工资 <span id=ctrlDiv><font size=-2>△</font></span>"));
  page = StaffPage(db, session, "action=list&page=1&order=name");
  EXPECT_EQ(Keys(page), K({"5", "4", "3", "2", "1"}));
  EXPECT_TRUE(Has(page, "姓名 <span id=ctrlDiv><font size=-2>▼</font></span>"));
  EXPECT_EQ(session.Get("strSQL"), Variant("select id,name,dept,pay from staff where pay>0 order by name DESC ,pay"));
  page = StaffPage(db, session, "action=list&page=1&order=name");
  EXPECT_EQ(Keys(page), K({"1", "2", "3", "4", "5"}));

  // Paging forward to the partial last page and back; row numbers follow the page.
  page = StaffPage(db, session, "action=list&page=1&pageSize=2");
  EXPECT_EQ(Keys(page), K({"1", "2"}));
  page = StaffPage(db, session, "action=list&page=2");
  EXPECT_EQ(Keys(page), K({"3", "4"}));
  EXPECT_TRUE(Has(page, "真的要删除第 3 条记录？"));
  page = StaffPage(db, session, "action=list&page=3");
  EXPECT_EQ(Keys(page), K({"5"}));
  EXPECT_TRUE(Has(page, "</span>页 共3页 共5项</td>"));
  EXPECT_TRUE(Has(page, "<td nowrap>下一页</td><td nowrap>最末页</td>"));
  page = StaffPage(db, session, "action=list&page=2");
  EXPECT_EQ(Keys(page), K({"3", "4"}));
  EXPECT_TRUE(Has(page, "<option value=2 selected  >2</option>"));

  // Choosing columns: the form, then its post.
  page = StaffPage(db, session, "action=setcol&page=1");
  EXPECT_TRUE(Has(page, "<Form name='setcol' method='post' action='/staff.asp'>"));
  EXPECT_TRUE(Has(page, "value='2'><br>"));
  page = StaffPage(db, session, "", "action=list&choseItem=id&choseItem=name&pageSize=3");
  EXPECT_EQ(session.Get("strItemChose"), Variant("id, name"));
  EXPECT_EQ(Keys(page), K({"1", "2", "3"}));
  EXPECT_FALSE(Has(page, ">部门"));
  EXPECT_FALSE(Has(page, "<td>办公室&nbsp;</td>"));

  // Leaving for another page and coming back resets sort and columns, but keeps the page size.
  OtherPage(db, session);
  page = StaffPage(db, session, "page=1");
  EXPECT_EQ(session.Get("strItemChose"), Variant("id,name,dept,pay"));
  EXPECT_EQ(session.Get("strOrder"), Variant(""));
  EXPECT_EQ(Keys(page), K({"1", "2", "3"}));
  EXPECT_FALSE(Has(page, "<font size=-2>"));
  EXPECT_TRUE(Has(page, ">部门</a></th>"));
}

TEST(UserSession, AddChangeSearchAndDelete) {
  StaffDatabase db;
  host::Session session;
  StaffPage(db, session, "");

  std::string page = StaffPage(db, session, "action=insert");
  EXPECT_TRUE(Has(page, ">返回</a></td>"));
  EXPECT_FALSE(Has(page, ">添加</a></td>"));
  EXPECT_TRUE(Has(page, "<input type='hidden' name='action' value='insert2'>"));

  // 孙八 in UTF-8.
  page = StaffPage(db, session, "", "action=insert2&id=&name=%E5%AD%99%E5%85%AB&dept=2&pay=3100");
  EXPECT_TRUE(page.ends_with("插入成功"));
  EXPECT_EQ(db.Value("select name || dept || pay from staff where id=6"), "孙八23100");

  page = StaffPage(db, session, "action=update&id=6");
  EXPECT_TRUE(Has(page, "value='孙八'"));
  EXPECT_TRUE(Has(page, "<option value='2' selected >财务科</option>"));
  page = StaffPage(db, session, "action=update2&id=6", "id=6&name=%E5%AD%99%E5%85%AB&dept=1&pay=3200");
  EXPECT_EQ(db.Value("select dept || pay from staff where id=6"), "13200");
  EXPECT_TRUE(Has(page, ">添加</a></td>"));  // a list page after the change: the full command bar
  EXPECT_EQ(Keys(page).size(), 6u);

  page = StaffPage(db, session, "action=search");
  EXPECT_TRUE(Has(page, "<select name='dept' ><option></option>"));
  page = StaffPage(db, session, "", "action=search2&name=%E5%AD%99&dept=&pay=");
  EXPECT_EQ(session.Get("strSearch"), Variant("name like '%孙%' "));
  EXPECT_EQ(Keys(page), K({"6"}));
  page = StaffPage(db, session, "action=list&page=1");  // a page number keeps the search
  EXPECT_EQ(Keys(page), K({"6"}));
  page = StaffPage(db, session, "action=list");  // none clears it
  EXPECT_EQ(Keys(page).size(), 6u);

  page = StaffPage(db, session, "action=delete&id=6");
  EXPECT_EQ(db.Count(), 5);
  EXPECT_EQ(Keys(page), K({"3", "1", "2", "5", "4"}));  // the default sort by pay
}

TEST(UserSession, ARejectedSearchReachesThePageAsAnError) {
  StaffDatabase db;
  host::Session session;
  StaffPage(db, session, "");
  // A search on the integer field with text that is not a number makes the list's SQL invalid.
  try {
    StaffPage(db, session, "", "action=search2&pay=1+or");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), Error::kDatabaseError);
  }
  EXPECT_EQ(db.Count(), 5);
}

}  // namespace
}  // namespace corvane::testing
