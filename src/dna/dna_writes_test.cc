// Insert, update, delete and search from posted forms, checked in the database, the session and
// what the page received (no trace outside debug mode).
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {

const std::string kWriteSQL = "select id,name,dept,pay,hired from staff";

TEST_F(DnaTable, InsertJoinsTheGivenValuesButNeverTheKey) {
  // The posted form, the error, what the page received, and the added row.
  // clang-format off
  const std::tuple<const char*, int, const char*, const char*> cases[] = {
      {"id=7&name=+&dept=", 0, "输入为空", "<none>"},
      // An integer is joined as posted, unquoted: "1,2" gives three values for two columns.
      {"name=x&dept=1%2C2", Error::kDatabaseError, "", "<none>"},
      {"id=99&name=%E5%AD%99%E5%85%AB&dept=2&pay=+&hired=2026-06-01", 0, "插入成功", "孙八2-2026-06-01"},
  };
  // clang-format on
  for (const auto& [body, error, written, added] : cases) {
    DnaPage p(session, "", std::string("action=insert2&") + body);
    p.Open(db, kWriteSQL);
    EXPECT_EQ(ErrorNumber([&] { EXPECT_EQ(p.dna.Insert(), Variant()); }), error) << body;
    EXPECT_EQ(p.End(), written) << body;
    EXPECT_EQ(db.Value("select name || dept || ifnull(pay, '-') || hired from staff where id=6"), added);
  }
}

TEST_F(DnaTable, UpdateAndDeleteByKeyWithinTheFilter) {
  // The posted value comes before the query's.
  DnaPage p(session, "action=update2&id=3&name=x", "name=%E6%96%B0%E5%90%8D&pay=5000&dept=");
  p.Open(db, "select id,name,dept,pay from staff where dept=1");
  p.dna.DebugMode();
  p.Take();
  EXPECT_EQ(p.dna.Update(), Variant());
  EXPECT_EQ(p.Take(), Trace("id:3<br>") + Trace("name:202<br>") + Trace("dept:3<br>") + Trace("pay:3<br>") +
                          Trace(" update staff set name='新名',pay=5000 where dept=1 and id = 3"));
  p.dna.nItemKeyValue = Variant(1);
  EXPECT_EQ(p.dna.Delete(), Variant(true));
  p.dna.nItemKeyValue = Variant(2);          // 李四 is in department 2, outside the filter
  EXPECT_EQ(p.dna.Delete(), Variant(true));  // true even when no row matched
  EXPECT_EQ(p.Take(), "");                   // and never traced
  p.dna.Update();
  EXPECT_EQ(db.Value("select group_concat(name || pay) from staff"), "李四3500,新名5000,赵六4100,钱七3900");
  // With nothing given, dropping the last character takes the blank after "set": the database refuses.
  // Outside debug mode nothing of it reaches the page.
  DnaPage empty(session, "action=update2&id=2", "name=+");
  empty.Open(db, kWriteSQL);
  EXPECT_EQ(ErrorNumber([&] { empty.dna.Update(); }), Error::kDatabaseError);
  EXPECT_EQ(empty.End(), "");
}

TEST_F(DnaTable, SearchStoresTheConditionWithOneTrailingBlank) {
  for (auto [body, condition] :
       {std::pair{"id=4&name=+%E5%BC%A0+&dept=1&pay=", "name like '%张%' and dept=1 "},
        {"id=4&name=+", ""}}) {
    DnaPage p(session, "", std::string("action=search2&") + body);
    p.Open(db, kWriteSQL);
    p.dna.search();
    EXPECT_EQ(session.Get("strSearch"), Variant(condition)) << body;
    EXPECT_EQ(p.End(), "");
  }
}

}  // namespace corvane::testing
