// The record form, the code look-ups and the default column choice.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

const std::string kFormSQL = "select id,name,dept,hired from staff where pay>0";
const std::string kFormCaptions = "编号,姓名,部门,入职";
const std::string kFormCodes = "id;name;select deptName,deptID from dept;hired";

std::string Trace(const std::string& m) { return "<span id=debugID style='display:none'>" + m + "</span>"; }

// The field types as traced in debug mode.
const std::string kTypeTrace = Trace("id:3<br>") + Trace("name:202<br>") + Trace("dept:3<br>") + Trace("hired:135<br>");

const std::string kTableTop =
    "\r\n<table border='0'  cellpadding='0' cellspacing='0' align='center' width='100%'class=td2 >"
    "\r\n<tr valign=top ><td width=37 align=left><img src='../images/home1.gif'></td><td class=t1></td>"
    "<td class=t1></td><td class=t1></td><td class=t1></td><td align=right><img src='../images/home2.gif'></td>"
    "</tr>";
const std::string kTableBottom =
    "\r\n<tr valign=top class=td2><td width=37 align=left><img src='../images/home3.gif'></td><td class=t4>"
    "</td><td class=t4></td><td class=t4></td><td class=t4></td><td align=right><img "
    "src='../images/home4.gif'></td></tr>";
const std::string kCalendar =
    "\r\n<Script language=\"javascript\" src=\"../Include/Calendar.js\"></Script>"
    "\r\n<DIV id=calendar onmouseover=keepCal(); style=\"POSITION: absolute; VISIBILITY: hidden; Z-INDEX: "
    "200\"></DIV>";

std::string DateInput(int n, const std::string& name, const std::string& value) {
  std::string c = "Cal" + std::to_string(n);
  return "<input type='text' name='" + name + "' value='" + value + "' size=14><IMG align=top height=25 id=" + c +
         "  onclick= \"ShowCal(" + c + ".offsetLeft + 20, " + c + ".offsetTop , '" + name +
         "');\"  onmouseover=keepCal(); src=\"../Images/dropdown.gif\" width=27 style=\"POSITION: absolute;\"> "
         "</td>\r\n";
}
std::string TextInput(const std::string& name, const std::string& value) {
  return "<input type='text' name='" + name + "' value='" + value +
         "' onMouseOver='this.focus()'  onFocus='this.select()'></td>\r\n";
}
std::string Caption(const std::string& c) { return "<td align=right class=lable>" + c + "</td><td class=input>"; }

class RecordForm : public ::testing::Test {
 protected:
  void SetUp() override {
    session.Set("strURL", Variant("/staff.asp"));
    session.Set("sc_curdate", Variant("2026-11-02"));
  }
  std::string Form(const std::string& query, const std::string& action, const std::string& sql = kFormSQL,
                   const std::string& body = "") {
    DnaPage p(session, query, body);
    p.Open(db, sql, kFormCaptions);
    p.dna().SetCodeSQL(Variant(kFormCodes));
    Variant a(action);
    p.dna().DispForm(a);
    return p.End();
  }
  StaffDatabase db;
  host::Session session;
};

TEST_F(RecordForm, UpdateReadsTheRecordAndMarksItsCode) {
  EXPECT_EQ(Form("action=update&id=3", "update"),
            "<Form id=Frm1 name='update' method='post' Action='/staff.asp'>\r\n" + kTableTop +
                "<input type='hidden' name='action' value='update2'>\r\n"
                "<input type='hidden' name='id' value='3'><br>\r\n"
                "<tr><td class=t2></td>" + Caption("姓名") + TextInput("name", "王五") +
                Caption("部门") +
                "<select name='dept' ><option value='1' selected >办公室</option><option value='2'>财务科</option>"
                "\r\n</select></td><td class=t3></td></tr>"
                "<tr><td class=t2></td>" + Caption("入职") + DateInput(1, "hired", "2026-03-15") +
                "<td class=lable>&nbsp;</td><td class=t3></td></tr>" + kTableBottom +
                "\r\n</table><center><input type='submit' value='提交修改'>"
                "\r\n<input type='reset' value='重新修改'></center></Form>" + kCalendar);
}

TEST_F(RecordForm, UpdateNarrowsTheFilterForGood) {
  DnaPage p(session, "action=update&id=3");
  p.Open(db, kFormSQL, kFormCaptions);
  p.dna().SetCodeSQL(Variant(kFormCodes));
  p.dna().DebugMode();
  Variant a("update");
  p.dna().DispForm(a);
  std::string out = p.Take();
  // In debug mode the field types are traced, then the form, then its closing lines.
  EXPECT_NE(out.find(kTypeTrace + "<Form id=Frm1"), std::string::npos);
  EXPECT_NE(out.find(Trace("\r\n##调试信息:DisplayForm OK!<br>") +
                     Trace("\r\n#StrSQL=select id,name,dept,hired from staff where pay>0 and id=3<br>")),
            std::string::npos);
  Variant rs(CreateObject("ADODB.Recordset"));
  p.dna().GetList(rs);
  EXPECT_EQ(session.Get("strSQL"), Variant("select id,name,dept,hired from staff where pay>0 and id=3"));
}

TEST_F(RecordForm, InsertShowsFixedCodeByNameAndTodayInEmptyDates) {
  // The filter fixes dept=2: the form shows its name and keeps the code hidden, without a "</td>".
  EXPECT_EQ(Form("action=insert", "insert", "select id,name,dept,hired from staff where dept=2"),
            "<Form id=Frm1 name='insert' method='post' Action='/staff.asp'>\r\n" + kTableTop +
                "<input type='hidden' name='action' value='insert2'>\r\n"
                "<input type='hidden' name='id' value=''><br>\r\n"
                "<tr><td class=t2></td>" + Caption("姓名") + TextInput("name", "") + Caption("部门") +
                "财务科<input type='hidden' name='dept' value='2'><td class=t3></td></tr>"
                "<tr><td class=t2></td>" + Caption("入职") + DateInput(1, "hired", "2026-11-02") +
                "<td class=lable>&nbsp;</td><td class=t3></td></tr>" + kTableBottom +
                "\r\n</table><center><input type='submit' value='提交添加'>"
                "\r\n<input type='reset' value='重新添加'></center></Form>" + kCalendar);
}

TEST_F(RecordForm, SearchListsStartEmptyAndKeepThePostedValues) {
  std::string out = Form("action=search&name=%E5%BC%A0&dept=2", "search");
  EXPECT_NE(out.find("<input type='hidden' name='action' value='search2'>"), std::string::npos);
  EXPECT_NE(out.find(TextInput("name", "张")), std::string::npos);
  // The posted "2" is text and the code is a number: they never compare equal, so nothing is selected.
  EXPECT_NE(out.find("<select name='dept' ><option></option><option value='1'>办公室</option>"
                     "<option value='2'>财务科</option>\r\n</select></td>"),
            std::string::npos);
  EXPECT_NE(out.find("value='提交查询'>\r\n<input type='reset' value='重新查询'>"), std::string::npos);
}

TEST_F(RecordForm, InsertTwoEmptiesTheValuesAndOtherActionsHaveNoWord) {
  std::string again = Form("action=insert2&name=x", "insert2");
  EXPECT_NE(again.find("name='insert2'"), std::string::npos);
  EXPECT_NE(again.find("value='insert22'"), std::string::npos);
  EXPECT_NE(again.find(TextInput("name", "")), std::string::npos);
  EXPECT_NE(again.find("提交添加"), std::string::npos);

  std::string other = Form("action=view&name=x", "view");
  EXPECT_NE(other.find(TextInput("name", "x")), std::string::npos);
  EXPECT_NE(other.find("<input type='submit' value='提交'>\r\n<input type='reset' value='重新'>"), std::string::npos);
}

TEST_F(RecordForm, EvenFieldCountHasNoFillerAndTwoDatesNumberTheirCalendars) {
  session.Set("sc_curdate", Variant::Null());
  DnaPage p(session, "action=insert");
  p.Open(db, "select id,hired,hired from staff where pay>0", "编号,甲,乙");
  Variant a("insert");
  p.dna().DispForm(a);
  std::string out = p.End();
  EXPECT_NE(out.find("<tr><td class=t2></td>" + Caption("甲") + DateInput(1, "hired", "") + Caption("乙") +
                     DateInput(2, "hired", "") + "<td class=t3></td></tr>" + kTableBottom),
            std::string::npos);
  EXPECT_EQ(out.find("<td class=lable>&nbsp;</td>"), std::string::npos);
  // The calendar script and its DIV are written once.
  EXPECT_EQ(out.substr(out.size() - kCalendar.size()), kCalendar);
  EXPECT_EQ(out.find("Calendar.js"), out.rfind("Calendar.js"));
}

TEST_F(RecordForm, ValuesAreWrittenWithoutEscaping) {
  db.Run({"insert into staff values(6,'O''Brien <b>',1,100,null)"});
  std::string out = Form("action=update&id=6", "update");
  EXPECT_NE(out.find(TextInput("name", "O'Brien <b>")), std::string::npos);
  // A Null date is not an empty one: it stays Null and is written as nothing.
  EXPECT_NE(out.find(DateInput(1, "hired", "")), std::string::npos);
}

TEST_F(RecordForm, CodeFieldWithoutAnyFilterFindsNoFixedTerms) {
  // Without a filter the fixed-field arrays were never sized: a code field fails the form.
  try {
    Form("action=insert", "insert", "select id,name,dept,hired from staff");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 9);
  }
}

TEST_F(RecordForm, CodeLookups) {
  DnaPage p(session, "");
  p.Open(db);
  DNA& d = p.dna();
  const Variant codes("select deptName,deptID from dept");
  EXPECT_EQ(d.GetCodeName(codes, Variant(2)), Variant("财务科"));
  EXPECT_EQ(d.GetCodeName(codes, Variant("1")), Variant("办公室"));
  EXPECT_EQ(d.GetCodeName(codes, Variant(9)), Variant(""));
  // An existing filter is joined with " and  ".
  EXPECT_EQ(d.GetCodeName(Variant("select deptName,deptID from dept where deptID>1"), Variant(2)), Variant("财务科"));
  EXPECT_EQ(d.GetCodeName(Variant("select deptName,deptID from dept where deptID>1"), Variant(1)), Variant(""));
  // An empty value reads nothing: not even a table that does not exist.
  EXPECT_EQ(d.GetCodeName(Variant("select a,b from nosuchtable"), Variant("")), Variant(""));
  EXPECT_EQ(d.GetCodeName(Variant("select a,b from nosuchtable"), Variant()), Variant(""));
  EXPECT_THROW(d.GetCodeName(Variant("select a,b from nosuchtable"), Variant(1)), Error);

  EXPECT_EQ(d.SelectForm(codes, Variant(2)),
            Variant("<option value='1'>办公室</option><option value='2' selected >财务科</option>"));
  EXPECT_EQ(d.SelectForm(codes, Variant("2")),
            Variant("<option value='1'>办公室</option><option value='2'>财务科</option>"));
  // A select list with one column has no code column.
  try {
    d.SelectForm(Variant("select deptName from dept"), Variant(1));
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 9);
  }
}

TEST(DefaultItem, AppliesOnlyWhenArrivingFromAnotherPage) {
  StaffDatabase db;
  host::Session session;
  {
    DnaPage p(session, "");
    p.Open(db);
    p.dna().DebugMode();
    p.Take();
    p.dna().SetDefaultItem(Variant("id,name"));
    EXPECT_EQ(session.Get("strItemChose"), Variant("id,name"));
    EXPECT_EQ(p.Take(), Trace("\r\n##调试信息:SetDefaultItem OK!<br>") +
                            Trace("#Session(strItemChose):id,name<br>\r\n"));
  }
  DnaPage same(session, "page=1&choseItem=dept");
  same.Open(db);
  same.dna().SetDefaultItem(Variant("id,name"));
  EXPECT_EQ(session.Get("strItemChose"), Variant("dept"));
}

}  // namespace
}  // namespace corvane::testing
