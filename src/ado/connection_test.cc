#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "ado/sqlite/sqlite_pool.h"
#include "ado/sqlite/sqlite_test_hook.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::ado {
namespace {

using corvane::testing::ScratchDatabase;
using corvane::testing::ScratchPath;

using corvane::testing::ErrorNumber;

std::string ErrorText(const std::function<void()>& f) {
  try {
    f();
  } catch (const Error& e) {
    return e.Description();
  }
  return "";
}

int32_t CountRows(const std::string& connectionString, const std::string& sql) {
  Recordset rs;
  rs.Open("select count(*) from (" + sql + ")", Variant(connectionString));
  return rs.Field(0).ToLong();
}

TEST(ConnectionOpen, OpenTwiceCloseTwiceAndUseWhenClosed) {
  ScratchDatabase db;
  Connection c;
  EXPECT_EQ(ErrorNumber([&] { c.Execute("select 1"); }), 3709);
  c.Open(db.connectionString);
  EXPECT_TRUE(c.IsOpen());
  EXPECT_EQ(c.ConnectionString(), db.connectionString);
  EXPECT_EQ(ErrorNumber([&] { c.Open(db.connectionString); }), 3705);
  c.Close();
  EXPECT_EQ(ErrorNumber([&] { c.Close(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { c.Execute("select 1"); }), 3709);
  auto closed = std::make_shared<Connection>();
  Recordset rs;
  EXPECT_EQ(ErrorNumber([&] { rs.Open("select 1", closed); }), 3709);
  EXPECT_EQ(ErrorNumber([&] { rs.Open("select 1", Variant()); }), 3709);
}

TEST(ConnectionOpen, ProvidersOtherThanSqliteAreNotFound) {
  for (const char* cs : {"Driver={PostgreSQL Unicode};Server=localhost;Database=office", "DSN=office",
                         "Provider=SQLOLEDB;Data Source=srv", "", "office.mdb"}) {
    Connection c;
    try {
      c.Open(cs);
      ADD_FAILURE() << cs;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 3706) << cs;
      EXPECT_EQ(e.Description(), "Provider cannot be found. It may not be properly installed.");
    }
    EXPECT_FALSE(c.IsOpen());
  }
}

TEST(ConnectionOpen, SqliteByProviderAnyCaseOrByBarePath) {
  std::filesystem::path file = ScratchPath("bare.sqlite3");
  Connection a;
  a.Open(file.string());
  a.Execute("create table t(a)");
  a.Close();
  Connection b;
  b.Open("provider=sqlite; data source = '" + file.string() + "'");
  EXPECT_EQ(b.Execute("insert into t values(1)"), 1);
  EXPECT_EQ(ErrorNumber([] { Connection().Open("Provider=SQLite"); }), Error::kDatabaseError);
}

TEST(ConnectionOpen, AFileThatIsNotADatabaseFailsAtOpen) {
  std::filesystem::path file = ScratchPath("junk.db");
  std::ofstream(file) << "this is not a database, just some text that is long enough to have a header";
  Connection c;
  EXPECT_EQ(ErrorText([&] { c.Open(file.string()); }), "file is not a database");
  EXPECT_FALSE(c.IsOpen());
}

TEST(ConnectionExecute, AnswersRowsChangedAndSpeaksTheComponentsDialect) {
  ScratchDatabase db;
  Connection c;
  c.Open(db.connectionString);
  EXPECT_EQ(c.Execute("create table t(id integer primary key, dept int)"), 0);
  EXPECT_EQ(c.Execute(" insert t(id,dept) values(1,3)"), 1);
  EXPECT_EQ(c.Execute("insert  t (id,dept) values(2,3)"), 1);
  EXPECT_EQ(c.Execute("insert into t(id,dept) values(7,3);  "), 1);
  EXPECT_EQ(c.Execute("update t set dept=4 where dept=3"), 3);
  EXPECT_EQ(c.Execute("select * from t"), 0);
  EXPECT_EQ(c.Execute(" delete t  where dept=4 and id = 7"), 1);
  EXPECT_EQ(c.Execute("delete t where id=99"), 0);
  EXPECT_EQ(CountRows(db.connectionString, "select * from t"), 2);
}

TEST(ConnectionExecute, ARejectedStatementRaisesItsMessageAndChangesNothing) {
  ScratchDatabase db;
  db.Run({"create table t(id integer primary key, name text not null)", "insert into t values(1,'a')"});
  Connection c;
  c.Open(db.connectionString);
  EXPECT_EQ(ErrorText([&] { c.Execute("insert into t values(2,'b'),(1,'c')"); }),
            "UNIQUE constraint failed: t.id");
  EXPECT_EQ(ErrorText([&] { c.Execute("update t se"); }), "near \"se\": syntax error");
  EXPECT_EQ(ErrorText([&] { c.Execute("delete from nowhere"); }), "no such table: nowhere");
  EXPECT_EQ(ErrorNumber([&] { c.Execute(""); }), Error::kDatabaseError);
  EXPECT_EQ(CountRows(db.connectionString, "select * from t"), 1);
  // The connection is still fine afterwards.
  EXPECT_EQ(c.Execute("insert into t values(2,'b')"), 1);
}

TEST(ConnectionExecute, AStackedStatementRaisesAndRunsNothing) {
  ScratchDatabase db;
  db.Run({"create table t(a)", "insert into t values(1)"});
  Connection c;
  c.Open(db.connectionString);
  for (const char* sql : {"insert into t values(2); delete from t", "insert t values(2);delete t",
                          "delete from t; -- gone\n select 1"}) {
    std::string text = ErrorText([&] { c.Execute(sql); });
    EXPECT_NE(text.find("only one statement"), std::string::npos) << sql;
  }
  Recordset rs;
  EXPECT_NE(ErrorText([&] { rs.Open("select * from t; drop table t", Variant(db.connectionString)); })
                .find("only one statement"),
            std::string::npos);
  EXPECT_EQ(CountRows(db.connectionString, "select * from t where a=1"), 1);
  EXPECT_EQ(CountRows(db.connectionString, "select * from t"), 1);
  // Trailing semicolons, blanks and comments are no second statement.
  EXPECT_EQ(c.Execute("insert into t values(3) ;; -- done\n /* really */ "), 1);
}

TEST(ConnectionPool, AClosedConnectionsHandleIsReused) {
  ScratchDatabase db;
  Connection first;
  first.Open(db.connectionString);
  sqlite3* handle = detail::SqliteHandleOf(first);
  ASSERT_NE(handle, nullptr);
  first.Execute("create temp table marker(x)");  // lives as long as the handle
  first.Close();
  EXPECT_EQ(detail::SqliteHandleOf(first), nullptr);
  Connection second;
  second.Open(db.connectionString);
  EXPECT_EQ(detail::SqliteHandleOf(second), handle);
  EXPECT_EQ(second.Execute("insert into marker values(1)"), 1);
  // A second connection at the same time gets a handle of its own.
  Connection third;
  third.Open(db.connectionString);
  EXPECT_NE(detail::SqliteHandleOf(third), handle);
  EXPECT_EQ(ErrorText([&] { third.Execute("insert into marker values(1)"); }), "no such table: marker");
}

TEST(ConnectionPool, AnUncommittedTransactionDoesNotLeakToTheNextUser) {
  ScratchDatabase db;
  db.Run({"create table t(a)"});
  Connection first;
  first.Open(db.connectionString);
  sqlite3* handle = detail::SqliteHandleOf(first);
  first.Execute("begin");
  first.Execute("insert into t values(1)");
  first.Close();

  Connection second;
  second.Open(db.connectionString);
  ASSERT_EQ(detail::SqliteHandleOf(second), handle);
  EXPECT_NE(sqlite3_get_autocommit(handle), 0);
  second.Execute("insert into t values(2)");  // committed at once: no transaction is open
  auto other = std::make_shared<Connection>();
  other->Open(db.connectionString);
  Recordset rs;
  rs.Open("select a from t", other);
  ASSERT_FALSE(rs.Eof());
  EXPECT_EQ(rs.Field(0), Variant(int32_t{2}));
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());
}

TEST(ConnectionPool, AnOpenRecordsetKeepsItsHandleOutOfThePool) {
  ScratchDatabase db;
  db.Run({"create table t(a)", "insert into t values(1)", "insert into t values(2)"});
  auto c = std::make_shared<Connection>();
  c->Open(db.connectionString);
  sqlite3* handle = detail::SqliteHandleOf(*c);
  Recordset rs;
  rs.Open("select a from t order by a", c);
  c->Close();
  Connection meanwhile;
  meanwhile.Open(db.connectionString);
  EXPECT_NE(detail::SqliteHandleOf(meanwhile), handle);
  rs.MoveNext();  // still readable after its connection closed
  EXPECT_EQ(rs.Field("a"), Variant(int32_t{2}));
  rs.Close();
  Connection after;
  after.Open(db.connectionString);
  EXPECT_EQ(detail::SqliteHandleOf(after), handle);
}

TEST(ConnectionPool, ARecordsetOpenedFromAStringGivesItsHandleBackOnClose) {
  ScratchDatabase db;
  db.Run({"create table t(a)"});
  std::shared_ptr<detail::SqlitePool> pool = detail::SqlitePool::For(db.file.string());
  ASSERT_EQ(pool->IdleCount(), 1u);
  Recordset rs;
  rs.Open("select a from t", Variant(db.connectionString));
  EXPECT_EQ(pool->IdleCount(), 0u);
  rs.Close();
  EXPECT_EQ(pool->IdleCount(), 1u);
}

TEST(ConnectionPool, ManyThreadsOpenWriteAndClose) {
  ScratchDatabase db;
  db.Run({"create table t(a)"});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 25; ++i) {
        Connection c;
        c.Open(db.connectionString);
        c.Execute("insert t values(" + std::to_string(t * 100 + i) + ")");
        c.Close();
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(CountRows(db.connectionString, "select distinct a from t"), 100);
}

}  // namespace
}  // namespace corvane::ado
