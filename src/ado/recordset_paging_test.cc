#include <gtest/gtest.h>

#include "ado/sqlite/sqlite_test_hook.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::ado {
namespace {

using corvane::testing::ScratchDatabase;

// A table t(id, name) of rows 1..rows.
std::shared_ptr<Connection> TableOf(const ScratchDatabase& db, int rows) {
  db.Run({"create table t(id integer primary key, name varchar(20))",
          "insert into t(id, name) with recursive c(x) as (select 1 union all select x+1 from c where x<" +
              std::to_string(rows) + ") select x, 'n' || x from c"});
  auto c = std::make_shared<Connection>();
  c->Open(db.connectionString);
  return c;
}

std::vector<int32_t> ReadPage(Recordset& rs) {
  std::vector<int32_t> ids;
  for (int n = 0; n < rs.PageSize() && !rs.Eof(); ++n) {
    ids.push_back(rs.Field("id").ToLong());
    rs.MoveNext();
  }
  return ids;
}

std::vector<int32_t> Range(int32_t from, int32_t to) {
  std::vector<int32_t> v;
  for (int32_t i = from; i <= to; ++i) v.push_back(i);
  return v;
}

TEST(RecordsetPaging, CountsAndTheLastPage) {
  ScratchDatabase db;
  auto c = TableOf(db, 10000);
  Recordset rs;
  rs.Open("select id, name from t order by id", c, adOpenKeyset);
  EXPECT_EQ(rs.PageSize(), 10);
  rs.SetPageSize(20);
  EXPECT_EQ(rs.RecordCount(), 10000);
  EXPECT_EQ(rs.PageCount(), 500);
  rs.SetAbsolutePage(500);
  EXPECT_EQ(rs.AbsolutePage(), 500);
  EXPECT_EQ(ReadPage(rs), Range(9981, 10000));
  EXPECT_TRUE(rs.Eof());
  EXPECT_EQ(rs.AbsolutePage(), -3);  // adPosEOF
}

TEST(RecordsetPaging, APartialLastPage) {
  ScratchDatabase db;
  auto c = TableOf(db, 10005);
  Recordset rs;
  rs.Open("select id from t order by id desc", c);
  rs.SetPageSize(20);
  EXPECT_EQ(rs.PageCount(), 501);
  rs.SetAbsolutePage(501);
  EXPECT_EQ(ReadPage(rs), (std::vector<int32_t>{5, 4, 3, 2, 1}));
  EXPECT_TRUE(rs.Eof());
  rs.SetAbsolutePage(2);
  EXPECT_EQ(rs.Field("id"), Variant(int32_t{9985}));
}

TEST(RecordsetPaging, AbsolutePageFollowsTheRowPosition) {
  ScratchDatabase db;
  auto c = TableOf(db, 50);
  Recordset rs;
  rs.Open("select id from t order by id", c);
  rs.SetPageSize(20);
  EXPECT_EQ(rs.AbsolutePage(), 1);
  rs.SetAbsolutePage(2);
  for (int i = 0; i < 19; ++i) rs.MoveNext();
  EXPECT_EQ(rs.Field("id"), Variant(int32_t{40}));
  EXPECT_EQ(rs.AbsolutePage(), 2);
  rs.MoveNext();
  EXPECT_EQ(rs.AbsolutePage(), 3);
}

TEST(RecordsetPaging, OutOfRangePages) {
  ScratchDatabase db;
  auto c = TableOf(db, 30);
  Recordset rs;
  rs.Open("select id from t order by id", c);
  rs.SetPageSize(20);
  for (int32_t bad : {0, -1}) {
    try {
      rs.SetAbsolutePage(bad);
      ADD_FAILURE() << bad;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 3001);
      EXPECT_EQ(e.Description(), "Arguments are of the wrong type, are out of acceptable range, or are in "
                                 "conflict with one another.");
    }
  }
  EXPECT_THROW(rs.SetPageSize(0), Error);
  rs.SetAbsolutePage(3);  // past the last row
  EXPECT_TRUE(rs.Eof());
  EXPECT_FALSE(rs.Bof());
  rs.SetAbsolutePage(1);  // and back
  EXPECT_EQ(rs.Field("id"), Variant(int32_t{1}));
}

TEST(RecordsetPaging, AnEmptyResultHasNoPages) {
  ScratchDatabase db;
  auto c = TableOf(db, 3);
  Recordset rs;
  rs.Open("select id from t where id > 100", c);
  EXPECT_EQ(rs.RecordCount(), 0);
  EXPECT_EQ(rs.PageCount(), 0);
}

TEST(RecordsetPaging, AStatementWithItsOwnLimitIsPagedWithinIt) {
  ScratchDatabase db;
  auto c = TableOf(db, 100);
  Recordset rs;
  rs.Open("select top 30 id from t order by id desc", c);
  rs.SetPageSize(20);
  EXPECT_EQ(rs.RecordCount(), 30);
  EXPECT_EQ(rs.PageCount(), 2);
  rs.SetAbsolutePage(2);
  EXPECT_EQ(ReadPage(rs), (std::vector<int32_t>{80, 79, 78, 77, 76, 75, 74, 73, 72, 71}));
  EXPECT_TRUE(rs.Eof());
}

TEST(RecordsetPaging, TheCountIsTakenOnce) {
  ScratchDatabase db;
  auto c = TableOf(db, 10);
  Recordset rs;
  rs.Open("select id from t", c);
  EXPECT_EQ(rs.RecordCount(), 10);
  c->Execute("insert t(id, name) values(11, 'late')");
  EXPECT_EQ(rs.RecordCount(), 10);
}

// Counts its calls: it runs once for every row the database produces.
void CountCalls(sqlite3_context* context, int, sqlite3_value** values) {
  ++*static_cast<int*>(sqlite3_user_data(context));
  sqlite3_result_value(context, values[0]);
}

TEST(RecordsetPaging, ADeepPageIsReadWithoutProducingTheRowsBeforeIt) {
  ScratchDatabase db;
  auto c = TableOf(db, 10000);
  int calls = 0;
  ASSERT_EQ(sqlite3_create_function(detail::SqliteHandleOf(*c), "counted", 1, SQLITE_UTF8, &calls,
                                    CountCalls, nullptr, nullptr),
            SQLITE_OK);
  Recordset rs;
  rs.Open("select counted(id) as k, id, name from t order by t.id", c);
  EXPECT_EQ(calls, 1);  // Open reads the first row only
  rs.SetPageSize(20);
  EXPECT_EQ(rs.PageCount(), 500);
  calls = 0;
  rs.SetAbsolutePage(400);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(ReadPage(rs), Range(7981, 8000));
  EXPECT_EQ(calls, 21);  // the page's 20 rows, and the first row of the next page that ended it
}

}  // namespace
}  // namespace corvane::ado
