// Connection on every backend: its states and their errors, rows changed, one statement per call, and
// pooled handles. A temporary table lives as long as the database handle it was made on, so it shows
// which handle a connection got.
#include <thread>

#include "ado/data_layer_fixture.h"

namespace corvane::ado::testing {

using ConnectionTest = DataLayerTest;

TEST_P(ConnectionTest, OpenTwiceCloseTwiceExecuteWhenClosedAndNoDriverForTheString) {
  Connection c;
  for (const char* unknown : {"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=office.mdb", "", "office.mdb"})
    EXPECT_EQ(ErrorNumber([&] { c.Open(unknown); }), 3706) << unknown;
  c.Open(cs);
  EXPECT_EQ(ErrorNumber([&] { c.Open(cs); }), 3705);
  c.Close();
  EXPECT_EQ(ErrorNumber([&] { c.Close(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { c.Execute("select 1"); }), 3709);
}

TEST_P(ConnectionTest, ExecuteAnswersTheRowsChangedOrRaisesAndChangesNothing) {
  auto c = Connect();
  const std::pair<const char*, int32_t> cases[] = {{"create table t(id int primary key, dept int)", 0},
                                                   {" insert t(id,dept) values(1,3)", 1},
                                                   {"insert into t(id,dept) values(2,3),(7,3);  ", 2},
                                                   {"update t set dept=4 where dept=3", 3},
                                                   {"select * from t", 0},
                                                   {" delete t  where dept=4 and id = 7", 1},
                                                   {"delete t where id=99", 0}};
  for (const auto& [sql, changed] : cases) EXPECT_EQ(c->Execute(sql), changed) << sql;
  for (const char* sql : {"insert t(id,dept) values(3,0),(1,0)", "update t se", "delete from nowhere", ""})
    EXPECT_EQ(ErrorNumber([&] { c->Execute(sql); }), Error::kDatabaseError) << sql;
  EXPECT_EQ(Ids("select id from t order by id"), (std::vector<int32_t>{1, 2}));
}

TEST_P(ConnectionTest, OneStatementPerCallAndNothingOfASecondRuns) {
  Run({"create table t(a int)", "insert t(a) values(1)"});
  auto c = Connect();
  const auto refused = ThrowsMessage<Error>(::testing::HasSubstr("only one statement"));
  EXPECT_THAT([&] { c->Execute("insert t(a) values(2); delete t"); }, refused);
  EXPECT_THAT([&] { c->Execute("delete from t; -- gone\n select 1"); }, refused);
  EXPECT_THAT([&] { Recordset().Open("select a from t; drop table t", c); }, refused);
  EXPECT_EQ(Ids("select a from t"), std::vector<int32_t>{1});
  // Trailing semicolons, blanks and comments are no second statement.
  EXPECT_EQ(c->Execute("insert t(a) values(3) ;; -- done\n /* really */ "), 1);
}

TEST_P(ConnectionTest, AHandleGoesBackToThePoolWhenItsLastUserClosesAndComesBackReset) {
  Run({"create table t(a int)", "insert t(a) values(1),(2)"});
  auto first = Connect();
  for (const char* sql : {"create temporary table marker(x int)", "begin", "insert t(a) values(3)"})
    first->Execute(sql);
  Recordset rs;
  rs.Open("select a from t order by a", first);
  first->Close();
  auto beside = Connect();  // while the recordset holds the handle: another one
  EXPECT_EQ(ErrorNumber([&] { beside->Execute("insert marker(x) values(1)"); }), Error::kDatabaseError);
  rs.MoveNext();
  EXPECT_EQ(rs.Field("a"), Variant(int32_t{2}));
  rs.Close();
  auto second = Connect();
  EXPECT_EQ(second->Execute("insert marker(x) values(1)"), 1);  // the first one's handle
  second->Execute("insert t(a) values(4)");  // committed at once: the first one's transaction is gone
  EXPECT_EQ(Ids("select a from t order by a"), (std::vector<int32_t>{1, 2, 4}));
}

// Pages run on several threads at once: each pooled handle serves one connection at a time.
TEST_P(ConnectionTest, ThreadsShareThePool) {
  Run({"create table t(a int)"});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 10; ++i)
        Connect()->Execute("insert t(a) values(" + std::to_string(t * 100 + i) + ")");
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(Ids("select count(distinct a) from t"), std::vector<int32_t>{40});
}

CORVANE_ON_EVERY_BACKEND(ConnectionTest);

}  // namespace corvane::ado::testing
