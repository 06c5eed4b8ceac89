// Insert, update, delete and search from posted forms, checked in the database and the session.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

const std::string kWriteSQL = "select id,name,dept,pay,hired from staff";

std::string Trace(const std::string& m) { return "<span id=debugID style='display:none'>" + m + "</span>"; }
const std::string kTypeTrace = Trace("id:3<br>") + Trace("name:202<br>") + Trace("dept:3<br>") +
                               Trace("pay:3<br>") + Trace("hired:135<br>");

class Writes : public ::testing::Test {
 protected:
  void SetUp() override { session.Set("strURL", Variant("/staff.asp")); }
  StaffDatabase db;
  host::Session session;
};

TEST_F(Writes, InsertJoinsTheGivenValuesOnly) {
  DnaPage p(session, "", "action=insert2&id=99&name=%E5%AD%99%E5%85%AB&dept=2&pay=+&hired=2026-06-01");
  p.Open(db, kWriteSQL);
  EXPECT_EQ(p.dna().Insert(), Variant());
  EXPECT_EQ(p.End(), "插入成功");
  EXPECT_EQ(db.Count(), 6);
  // The key is never written: the new row got the next id, the blank pay stayed out.
  EXPECT_EQ(db.Value("select name || '|' || dept || '|' || ifnull(pay,'null') || '|' || hired from staff "
                     "where id=6"),
            "孙八|2|null|2026-06-01");
}

TEST_F(Writes, InsertWithNothingGivenWritesInputEmpty) {
  DnaPage p(session, "", "action=insert2&id=7&name=+&dept=");
  p.Open(db, kWriteSQL);
  p.dna().Insert();
  EXPECT_EQ(p.End(), "输入为空");
  EXPECT_EQ(db.Count(), 5);
}

TEST_F(Writes, RejectedInsertRaisesAndChangesNothing) {
  // An integer value is joined as posted: "1,2" gives three values for two columns.
  DnaPage p(session, "", "action=insert2&name=x&dept=1%2C2");
  p.Open(db, kWriteSQL);
  try {
    p.dna().Insert();
    FAIL() << "the database should reject the statement";
  } catch (const Error& e) {
    EXPECT_FALSE(e.Description().empty());
  }
  EXPECT_EQ(p.End(), "");  // no success message, and no trace outside debug mode
  EXPECT_EQ(db.Count(), 5);
}

TEST_F(Writes, UpdateWithinTheFilterByKey) {
  DnaPage p(session, "action=update2&id=3", "name=%E6%96%B0%E5%90%8D&pay=5000&dept=");
  p.Open(db, "select id,name,dept,pay from staff where dept=1");
  EXPECT_EQ(p.dna().Update(), Variant());
  EXPECT_EQ(p.End(), "");  // no trace outside debug mode
  EXPECT_EQ(db.Value("select name || pay || dept from staff where id=3"), "新名50001");
  EXPECT_EQ(db.Value("select name from staff where id=2"), "李四");
}

TEST_F(Writes, UpdateOutsideTheFilterChangesNothing) {
  DnaPage p(session, "action=update2&id=2", "name=x");
  p.Open(db, "select id,name,dept,pay from staff where dept=1");
  p.dna().Update();
  EXPECT_EQ(db.Value("select name from staff where id=2"), "李四");
}

TEST_F(Writes, UpdateWithNothingGivenFailsAtTheDatabase) {
  DnaPage p(session, "action=update2&id=2", "name=");
  p.Open(db, kWriteSQL);
  p.dna().DebugMode();
  p.Take();
  EXPECT_THROW(p.dna().Update(), Error);
  // In debug mode the statement is traced before it runs.
  EXPECT_EQ(p.Take(), kTypeTrace + Trace(" update staff set where id = 2"));
  EXPECT_EQ(db.Value("select name from staff where id=2"), "李四");
}

TEST_F(Writes, DeleteAnswersTrueWhetherOrNotARowMatched) {
  {
    DnaPage p(session, "action=delete&id=3");
    p.Open(db, "select id,name,dept from staff where dept=1");
    EXPECT_EQ(p.dna().Delete(), Variant(true));
    EXPECT_EQ(p.End(), "");  // no trace, no message
  }
  EXPECT_EQ(db.Count("where id=3"), 0);
  {
    DnaPage p(session, "action=delete&id=2");  // outside the filter
    p.Open(db, "select id,name,dept from staff where dept=1");
    EXPECT_EQ(p.dna().Delete(), Variant(true));
  }
  EXPECT_EQ(db.Count(), 4);
}

TEST_F(Writes, SearchStoresTheConditionWithOneTrailingBlank) {
  struct Case {
    std::string body, condition;
  };
  for (const Case& c : std::vector<Case>{
           {"id=4&name=+%E5%BC%A0+&dept=1&pay=", "name like '%张%' and dept=1 "},
           {"pay=3000", "pay=3000 "},
           {"id=4&name=+", ""},
       }) {
    SCOPED_TRACE(c.body);
    DnaPage p(session, "", "action=search2&" + c.body);
    p.Open(db, kWriteSQL);
    p.dna().search();
    EXPECT_EQ(session.Get("strSearch"), Variant(c.condition));
  }
}

}  // namespace
}  // namespace corvane::testing
