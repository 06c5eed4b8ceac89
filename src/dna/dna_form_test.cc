// The filter that the update form narrows, the list recordsets opened after it, and the code look-ups.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {

TEST_F(DnaTable, UpdateFormNarrowsTheFilterForTheListAfterIt) {
  db.Run({"insert into staff values(6,'O''Brien <b>',1,100,null)"});
  session.Set("sc_curdate", Variant("2026-11-02"));
  DnaPage p(session, "action=update&id=6");
  p.Open(db, "select id,name,hired from staff where pay>0", "");
  p.dna.DebugMode();
  Variant action("update"), rs(CreateObject("ADODB.Recordset")), other(CreateObject("ADODB.Recordset"));
  p.dna.DispForm(action);
  // Values are written as they stand, and a Null date stays Null: it is not an empty one.
  const std::string form = p.Take();
  EXPECT_NE(form.find("name='name' value='O'Brien <b>' "), std::string::npos);
  EXPECT_NE(form.find("name='hired' value='' size=14>"), std::string::npos);
  const std::string sql = "select id,name,hired from staff where pay>0 and id=6";
  p.dna.GetList(rs);
  EXPECT_EQ(p.Take(), "SQL:" + sql + Trace("##调试信息:DispList OK!<br>\r\n") +
                          Trace("#Session(strSQL):" + sql + "<br>\r\n"));
  p.dna.GetRs(Variant("select name from staff where id=4"), other);
  EXPECT_EQ(rs.ToObject().As<ado::Recordset>()->Field("name"), Variant("O'Brien <b>"));
  EXPECT_EQ(other.ToObject().As<ado::Recordset>()->Field(0), Variant("赵六"));
  // Without a filter the fixed fields were never sized: a code field fails the form.
  DnaPage unfiltered(session, "action=update&id=1");
  unfiltered.Open(db);
  unfiltered.dna.SetCodeSQL(Variant(kDeptCodes));
  EXPECT_EQ(ErrorNumber([&] { unfiltered.dna.DispForm(action); }), 9);
  // Code look-ups.
  const Variant codes("select deptName,deptID from dept");
  const Variant cases[][3] = {
      {codes, Variant(2), Variant("财务科")},
      {codes, Variant(9), Variant("")},
      {Variant("select deptName,deptID from dept where deptID>1"), Variant(1), Variant("")},  // " and  "
      {Variant("select 'A',7"), Variant(7), Variant("A")},  // no "from": the code column is "7"
      {Variant("select a,b from nosuchtable"), Variant(""), Variant("")},  // an empty value reads nothing
  };
  for (const auto& [query, value, name] : cases)
    EXPECT_EQ(p.dna.GetCodeName(query, value), name) << query.Text();
}

}  // namespace corvane::testing
