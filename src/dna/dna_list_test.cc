// The list view compared as whole pages: paging bar, header, rows and table end.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

using namespace list_piece;

const std::string kHeader =
    "<table class=tbl cellSpacing=0>\r\n<tr><th nowrap>序号</th>"
    "<th nowrap><a href='/staff.asp?action=list&page=1&order=id'>编号</a></th>"
    "<th nowrap><a href='/staff.asp?action=list&page=1&order=name'>姓名</a></th>"
    "<th nowrap><a href='/staff.asp?action=list&page=1&order=dept'>部门</a></th></tr>\r\n";

std::string Row(int n, const std::string& id, const std::string& name, const std::string& dept) {
  return RowStart(n, id) + Cell(id) + Cell(name) + Cell(dept) + RowEnd();
}

// A page that lists the staff table with the request `query`; the session is on /staff.asp already.
std::string ListPage(const StaffDatabase& db, host::Session session, const std::string& query,
                     const std::string& sql = kStaffSQL) {
  DnaPage p(session, query);
  p.Open(db, sql);
  p.dna().DispList();
  return p.End();
}

class ListView : public ::testing::Test {
 protected:
  void SetUp() override { session.Set("strURL", Variant("/staff.asp")); }
  StaffDatabase db;
  host::Session session;
};

TEST_F(ListView, FirstOfThreePagesInFourWrites) {
  DnaPage p(session, "pageSize=2");
  p.Open(db);
  p.dna().DispList();
  std::vector<std::string> writes = p.page().Writes();
  ASSERT_EQ(writes.size(), 4u);
  EXPECT_EQ(writes[0], BarStart() + "<td nowrap>第一页</td><td nowrap>上一页</td>"
                       "<td nowrap><a href='/staff.asp?action=list&page=2'>下一页</a></td>"
                       "<td nowrap><a href='/staff.asp?action=list&page=3'>最末页</a></td>"
                       "<td nowrap><a href='/staff.asp?action=listall&page=1'>>>全部</a></td>" +
                       SelectStart() + Option(1, true) + Option(2, false) + Option(3, false) +
                       BarEnd(1, 3, 5));
  EXPECT_EQ(writes[1], kHeader);
  EXPECT_EQ(writes[2], Row(1, "1", "张三", "1") + Row(2, "2", "李四", "2"));
  EXPECT_EQ(writes[3], "</table>\r\n");
  EXPECT_EQ(session.Get("strSQL").ToString(), "select id,name,dept from staff ");
  EXPECT_EQ(p.dna().nPageSize, 2);
}

TEST_F(ListView, LastPartialPageContinuesTheRowNumbers) {
  session.Set("nPageSize", Variant(int16_t{2}));
  EXPECT_EQ(ListPage(db, session, "page=3"),
            BarStart() + "<td nowrap><a href='/staff.asp?action=list&page=1'>第一页</a></td>"
                         "<td nowrap><a href='/staff.asp?action=list&page=2'>上一页</a></td>"
                         "<td nowrap>下一页</td><td nowrap>最末页</td>"
                         "<td nowrap><a href='/staff.asp?action=listall&page=1'>>>全部</a></td>" +
                SelectStart() + Option(1, false) + Option(2, false) + Option(3, true) + BarEnd(3, 3, 5) +
                kHeader + Row(5, "5", "钱七", "1") + "</table>\r\n");
}

TEST_F(ListView, EmptyResultWritesNoRecordRow) {
  // Written out in full: the bar without links or options, and one row across all columns.
  EXPECT_EQ(
      ListPage(db, session, "", "select id,name,dept from staff where dept=9"),
      "<script>function gotoPage(page){ \r\n"
      " eval(\"document.location='/staff.asp?action=list&page=\"+page.options[page.selectedIndex].value+\" '\");}"
      "</script>\r\n"
      "<div id=page><table cellspading=0 width=100%><tr>\r\n"
      "<td nowrap><div id=ctrlDiv><table class=Page><tr>"
      "<td nowrap>第一页</td><td nowrap>上一页</td><td nowrap>下一页</td><td nowrap>最末页</td>"
      "</tr></table></div></td>\r\n"
      "<td width=100%>&nbsp;</td>\r\n"
      "<td nowrap>第<select id=ctrlDiv name=page onChange='gotoPage(this);return false;'> \r\n"
      "</select><span id=npage style='display:none'>1</span>页 共0页 共0项</td>\r\n"
      "</table><span id=updateID></span><span id=deleteID></span> </div>\r\n"
      "<table class=tbl cellSpacing=0>\r\n"
      "<tr><th nowrap>序号</th>"
      "<th nowrap><a href='/staff.asp?action=list&page=1&order=id'>编号</a></th>"
      "<th nowrap><a href='/staff.asp?action=list&page=1&order=name'>姓名</a></th>"
      "<th nowrap><a href='/staff.asp?action=list&page=1&order=dept'>部门</a></th></tr>\r\n"
      "<tr><td colspan=4 align=center>无记录</td></tr>"
      "</table>\r\n");
  EXPECT_EQ(session.Get("strSQL").ToString(), "select id,name,dept from staff where dept=9");
}

TEST_F(ListView, WholeTableModeShowsEveryRowAndTheSwitchBack) {
  session.Set("nPageSize", Variant(int16_t{2}));
  DnaPage p(session, "action=listall");
  p.Open(db);
  p.dna().DispList();
  std::string rows;
  const char* names[] = {"张三", "李四", "王五", "赵六", "钱七"};
  const char* depts[] = {"1", "2", "1", "2", "1"};
  for (int i = 0; i < 5; ++i) rows += Row(i + 1, std::to_string(i + 1), names[i], depts[i]);
  std::string header = kHeader;
  for (size_t at; (at = header.find("action=list&")) != std::string::npos;)
    header.replace(at, 12, "action=listall&");
  EXPECT_EQ(p.End(), BarStart() + "<td nowrap>第一页</td><td nowrap>上一页</td><td nowrap>下一页</td>"
                                  "<td nowrap>最末页</td>"
                                  "<td nowrap><a href='/staff.asp?action=list&page=1'>>>分页</a></td>" +
                         SelectStart() + Option(1, true) + BarEnd(1, 1, 5) + header + rows + "</table>\r\n");
  EXPECT_EQ(p.dna().nPageSize, 2000);
}

TEST_F(ListView, NoSwitchWhenEverythingFitsOnePage) {
  std::string page = ListPage(db, session, "pageSize=5");
  EXPECT_EQ(page.find("全部"), std::string::npos);
  EXPECT_EQ(page.find("分页"), std::string::npos);
}

TEST_F(ListView, ArrowsMarkPrimaryAndSecondarySortAndChosenColumnsOnly) {
  session.Set("strOrder", Variant("name DESC "));
  session.Set("strOrder2", Variant("dept"));
  session.Set("strItemChose", Variant("name, dept"));
  DnaPage p(session, "page=1");
  p.Open(db);
  p.dna().DispList();
  std::vector<std::string> writes = p.page().Writes();
  ASSERT_EQ(writes.size(), 4u);
  EXPECT_EQ(writes[1],
            "<table class=tbl cellSpacing=0>\r\n<tr><th nowrap>序号</th>"
            "<th nowrap><a href='/staff.asp?action=list&page=1&order=name'>姓名"
            " <span id=ctrlDiv><font size=-2>▼</font></span></a></th>"
            "<th nowrap><a href='/staff.asp?action=list&page=1&order=dept'>部门"
            " <span id=ctrlDiv><font size=-2>△</font></span></a></th></tr>\r\n");
  EXPECT_EQ(session.Get("strSQL").ToString(), "select id,name,dept from staff  order by name DESC ,dept");
  // Sorted by name descending (binary order of the UTF-8 text), the key links still name the id.
  EXPECT_EQ(writes[2].substr(0, RowStart(1, "5").size()), RowStart(1, "5"));

  session.Set("strOrder", Variant("dept"));
  session.Set("strOrder2", Variant("name DESC "));
  DnaPage q(session, "page=1");
  q.Open(db);
  q.dna().DispList();
  EXPECT_NE(q.page().Writes()[1].find("姓名 <span id=ctrlDiv><font size=-2>▽</font></span>"), std::string::npos);
  EXPECT_NE(q.page().Writes()[1].find("部门 <span id=ctrlDiv><font size=-2>▲</font></span>"), std::string::npos);
}

TEST_F(ListView, CodeColumnsShowTheLookedUpName) {
  DnaPage p(session, "pageSize=2");
  p.Open(db);
  p.dna().SetCodeSQL(Variant(kDeptCodeSQL));
  p.dna().DispList();
  EXPECT_EQ(p.page().Writes()[2], Row(1, "1", "张三", "办公室") + Row(2, "2", "李四", "财务科"));
}

TEST_F(ListView, SearchConditionJoinsTheFilter) {
  session.Set("strSearch", Variant("name like '%五%' "));
  DnaPage p(session, "page=1&pageSize=2");
  p.Open(db, "select id,name,dept from staff where dept=1");
  p.dna().DispList();
  EXPECT_EQ(session.Get("strSQL").ToString(),
            "select id,name,dept from staff where dept=1 and name like '%五%'  ");  // joint adds a blank
  EXPECT_EQ(p.page().Writes()[2], Row(1, "3", "王五", "1"));
}

TEST_F(ListView, DebugModeTracesEveryStepInHiddenSpans) {
  DnaPage p(session, "pageSize=2");
  p.dna().DebugMode();
  p.Open(db, "select id,name,dept from staff where dept=1");
  p.dna().DispList();
  auto t = [](const std::string& m) { return "<span id=debugID style='display:none'>" + m + "</span>"; };
  std::string expected =
      t("##调试信息:进入调试模式<br>\r\n") + t("##调试信息:OpenDNA<br>\r\n") + t("#表　　名:staff<br>\r\n") +
      t("#条　　件:where dept=1<br>\r\n") + t("#英文字段:id,name,dept<br>\r\n") +
      t("#中文字段:编号,姓名,部门<br>\r\n") + t("#主键字段:id<br>\r\n") + t("#编码检索:id;name;dept<br>\r\n") +
      t("#缺省排序::: <br>\r\n") + t("限定字段:dept:1<br>") + t("##调试信息:打开数据库 OK!<br>\r\n") +
      t("#Res:action=<br>\r\n") + t("#Res:page=<br>\r\n") + t("#Res:pageSize=2<br>\r\n") +
      t("#Res:order=<br>\r\n") + t("#Res:choseItem=<br>\r\n") + t("#Res:id=<br>\r\n") +
      t("#Res:name=<br>\r\n") + t("#Res:dept=<br>\r\n") + t("#Res:id=<br>\r\n") +
      t("##调试信息:GetRequestValue OK!<br>\r\n") + t("#Querystring:pageSize=2<br>\r\n") +
      t("#TotalSize:0<br>\r\n") + t("#Session(strItemChose):id,name,dept<br>\r\n") +
      t("#strURL:/staff.asp<br>\r\n") + t("SQL:select id,name,dept from staff where dept=1") + BarStart() +
      "<td nowrap>第一页</td><td nowrap>上一页</td>"
      "<td nowrap><a href='/staff.asp?action=list&page=2'>下一页</a></td>"
      "<td nowrap><a href='/staff.asp?action=list&page=2'>最末页</a></td>"
      "<td nowrap><a href='/staff.asp?action=listall&page=1'>>>全部</a></td>" +
      SelectStart() + Option(1, true) + Option(2, false) + BarEnd(1, 2, 3) + kHeader +
      Row(1, "1", "张三", "1") + Row(2, "3", "王五", "1") + "</table>\r\n" +
      t("##调试信息:DispList OK!<br>\r\n") + t("##调试信息:关闭数据库 OK!<br>\r\n");
  EXPECT_EQ(p.End(), expected);
}

TEST_F(ListView, RowNumbersAreSixteenBit) {
  // An empty list skips positioning, so page 1640 reaches the row number: 1639 × 20 overflows after
  // the bar and the header are written.
  session.Set("nPageSize", Variant(int16_t{20}));
  DnaPage p(session, "page=1640");
  p.Open(db, "select id,name,dept from staff where dept=9");
  try {
    p.dna().DispList();
    FAIL() << "no overflow";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 6);
  }
  EXPECT_EQ(p.page().Writes().size(), 2u);
}

TEST_F(ListView, GetListAndGetRsOpenTheCallersRecordset) {
  session.Set("strOrder", Variant("pay"));
  DnaPage p(session, "page=1");
  p.Open(db);
  Variant rs(CreateObject("ADODB.Recordset"));
  p.dna().GetList(rs);
  EXPECT_EQ(session.Get("strSQL").ToString(), "select id,name,dept from staff  order by pay");
  auto opened = rs.ToObject().As<ado::Recordset>();
  EXPECT_EQ(opened->Field("name").ToString(), "王五");
  opened->Close();

  Variant other(CreateObject("ADODB.Recordset"));
  p.dna().GetRs(Variant("select name from staff where id=4"), other);
  EXPECT_EQ(other.ToObject().As<ado::Recordset>()->Field(0).ToString(), "赵六");
  EXPECT_EQ(p.End(), "");  // nothing written outside debug mode
}

TEST_F(ListView, GetListInDebugModeWritesTheSqlVisibly) {
  DnaPage p(session, "page=1");
  p.Open(db, "select id,name,dept from staff where dept=2");
  p.dna().DebugMode();
  p.Take();
  Variant rs(CreateObject("ADODB.Recordset"));
  p.dna().GetList(rs);
  EXPECT_EQ(p.Take(),
            "SQL:select id,name,dept from staff where dept=2"
            "<span id=debugID style='display:none'>##调试信息:DispList OK!<br>\r\n</span>"
            "<span id=debugID style='display:none'>#Session(strSQL):select id,name,dept from staff where "
            "dept=2<br>\r\n</span>");
}

TEST_F(ListView, ColumnChoiceForm) {
  session.Set("nPageSize", Variant(int16_t{15}));
  session.Set("strItemChose", Variant("id, dept"));
  DnaPage p(session, "action=setcol&page=1");
  p.Open(db);
  p.dna().DispSetColumns();
  EXPECT_EQ(p.End(),
            "<Form name='setcol' method='post' action='/staff.asp'>\r\n"
            "<input type='hidden' name='action' value='list'>"
            "编号: <input type='checkbox' name='choseItem' value='id' checked>\r\n"
            "姓名: <input type='checkbox' name='choseItem' value='name' >\r\n"
            "部门: <input type='checkbox' name='choseItem' value='dept' checked>\r\n"
            "<br>每页行数：<input type='text' name='pageSize' size=3 value='15'><br>\r\n"
            "<input type='submit'  value='设定显示列'></Form>\r\n");
}

TEST_F(ListView, RejectedSearchEndsTheListBeforeAnyWrite) {
  session.Set("strSearch", Variant("nosuchcolumn=1 "));
  DnaPage p(session, "page=1");
  p.Open(db);
  EXPECT_THROW(p.dna().DispList(), Error);
  EXPECT_TRUE(p.page().Writes().empty());
}

}  // namespace
}  // namespace corvane::testing
