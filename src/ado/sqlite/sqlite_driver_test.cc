// What only the SQLite driver does or shows: its connection strings, its messages, its storage classes
// as field values, and, through the handle under a connection, how few rows a page costs and the state
// a handle goes back to the pool in.
#include <filesystem>
#include <fstream>
#include <functional>

#include "ado/data_layer_fixture.h"
#include "ado/sqlite/sqlite_test_hook.h"

namespace corvane::ado::testing {

using corvane::testing::ScratchDatabase;

// The connection string's rules are the parser's, driver-neutral; SQLite is where they show today.
TEST(SqliteDriver, OpensABarePathOrAConnectionStringAndSaysWhatWentWrong) {
  const std::string stem = corvane::testing::ScratchPath("a;b").string(), file = stem + "'.db";
  Connection a, b;
  a.Open(file);  // a bare path
  a.Execute("create table t(id integer primary key)");
  // Keys in any case, blanks around them, a part without "=", the last of a repeated key, quotes.
  b.Open("junk; PROVIDER = SQLite; Data Source=" + stem + "-not.db; data source = '" + stem + "''.db' ");
  EXPECT_EQ(b.Execute("insert into t values(1)"), 1);
  const std::pair<const char*, const char*> rejected[] = {
      {"insert into t values(2),(1)", "UNIQUE constraint failed: t.id"},
      {"update t se", "near \"se\": syntax error"},
      {"delete from nowhere", "no such table: nowhere"}};
  for (const auto& [sql, text] : rejected) EXPECT_THAT([&] { b.Execute(sql); }, ThrowsMessage<Error>(text));
  EXPECT_EQ(ErrorNumber([] { Connection().Open("Provider=SQLite;Data Source="); }), Error::kDatabaseError);
  std::ofstream(stem + ".db") << "not a database: just some text that is long enough to have a header";
  EXPECT_THAT([&] { Connection().Open(stem + ".db"); }, ThrowsMessage<Error>("file is not a database"));
}

// Values as SQLite stores them under declared types it keeps loosely, and in columns without one.
TEST(SqliteDriver, StoredValuesUnderEachTypeAndWithoutOne) {
  ScratchDatabase db;
  db.Run(
      {"create table t(b bigint, s smallint, f bit, g bit, r real, v varchar(9), bl blob, tb blob, "
       "dt datetime, u)",
       "insert into t values(5000000000, 70000, 2, 0, 3, 42, x'00ff', 'ab', 'not a date', 9)"});
  Recordset rs;
  rs.Open("select *, 1.5 as q, 'x' as x, 1 << 40 as big, null as z from t", Variant(db.connectionString));
  const std::tuple<const char*, int, Variant> cases[] = {{"b", adInteger, 5e9},
                                                         {"s", adSmallInt, int32_t{70000}},
                                                         {"f", adBoolean, true},
                                                         {"g", adBoolean, false},
                                                         {"r", adDouble, 3.0},
                                                         {"v", adVarWChar, "42"},
                                                         {"dt", adDBTimeStamp, "not a date"},
                                                         {"u", adInteger, int32_t{9}},
                                                         {"q", adDouble, 1.5},
                                                         {"x", adVarWChar, "x"},
                                                         {"big", adDouble, 1099511627776.0},
                                                         {"z", adVarWChar, Variant::Null()}};
  for (const auto& [name, type, value] : cases) {
    EXPECT_EQ(rs.FieldType(name), type) << name;
    EXPECT_EQ(rs.Field(name), value) << name;
  }
  EXPECT_EQ(rs.Field("bl").ToBytes(), (Bytes{0, 255}));
  EXPECT_EQ(rs.Field("tb").ToBytes(), (Bytes{'a', 'b'}));  // text in a blob column
}

// Counts its calls: it runs once for every row the database produces.
static void CountCalls(sqlite3_context* context, int, sqlite3_value** values) {
  ++*static_cast<int*>(sqlite3_user_data(context));
  sqlite3_result_value(context, values[0]);
}

TEST(SqliteDriver, ADeepPageCostsItsOwnRowsOnlyAndTheHandleGoesBackWithNoStatementPending) {
  ScratchDatabase db;
  db.Run({"create table t(id integer primary key)",
          "insert into t with recursive c(x) as (select 1 union all select x+1 from c where x<1000) "
          "select x from c"});
  auto c = std::make_shared<Connection>();
  c->Open(db.connectionString);
  sqlite3* handle = detail::SqliteHandleOf(*c);
  int calls = 0;
  sqlite3_create_function(handle, "counted", 1, SQLITE_UTF8, &calls, CountCalls, nullptr, nullptr);
  Recordset rs;
  rs.Open("select counted(id) from t order by t.id", c);
  EXPECT_EQ(calls, 1);  // Open reads the first row only
  rs.SetPageSize(20);
  calls = 0;
  rs.SetAbsolutePage(40);
  for (int i = 0; i < 20; ++i) rs.MoveNext();
  EXPECT_EQ(calls, 21);  // the page's 20 rows and the first row of the next page
  EXPECT_EQ(rs.Field(0), Variant(int32_t{801}));
  c->Close();
  rs.Close();  // in the middle of its statement
  Connection next;
  next.Open(db.connectionString);
  ASSERT_EQ(detail::SqliteHandleOf(next), handle);
  for (sqlite3_stmt* s = sqlite3_next_stmt(handle, nullptr); s; s = sqlite3_next_stmt(handle, s))
    EXPECT_FALSE(sqlite3_stmt_busy(s)) << sqlite3_sql(s);
}

// A statement is kept with its columns; when another connection changes the table, the next open of
// the same text shows the table as it is now, names and declared types.
TEST(SqliteDriver, AKeptStatementShowsTheColumnsOfAChangedTable) {
  ScratchDatabase db;
  db.Run({"create table t(a integer)", "insert into t values(1)"});
  auto reader = std::make_shared<Connection>();
  reader->Open(db.connectionString);
  Recordset rs;
  rs.Open("select * from t", reader);
  EXPECT_EQ(rs.FieldCount(), 1);
  rs.Close();  // the statement stays with the reader's handle
  db.Run({"alter table t add column b datetime", "update t set b = '2026-11-24'"});
  for (int open = 0; open < 2; ++open) {
    rs.Open("select * from t", reader);
    ASSERT_EQ(rs.FieldCount(), 2) << open;
    EXPECT_EQ(rs.FieldName(1), "b");
    EXPECT_EQ(rs.FieldType("B"), adDBTimeStamp);
    EXPECT_EQ(rs.Field("b").ToString(), "2026-11-24");
    rs.Close();
  }
}

// Counts the statements a connection runs whose text starts with `prefix`.
struct RunCounter {
  RunCounter(Connection& c, std::string_view p) : prefix(p) {
    sqlite3_trace_v2(detail::SqliteHandleOf(c), SQLITE_TRACE_STMT, &Trace, this);
  }
  static int Trace(unsigned, void* self, void* stmt, void*) {
    auto* counter = static_cast<RunCounter*>(self);
    if (std::string_view(sqlite3_sql(static_cast<sqlite3_stmt*>(stmt))).starts_with(counter->prefix))
      ++counter->ran;
    return 0;
  }
  std::string_view prefix;
  int ran = 0;
};

// A list page counts its query on every page: the count is kept while the database is surely as it
// was, and asked again after any change, by another connection or by this one, and in a transaction.
TEST(SqliteDriver, ACountIsKeptOnlyWhileTheDatabaseIsAsItWas) {
  ScratchDatabase db;
  db.Run({"create table t(id integer primary key)", "insert into t values(1),(2),(3)",
          "create view late as select id from t where id < random()"});
  auto c = std::make_shared<Connection>();
  c->Open(db.connectionString);
  RunCounter counter(*c, "select count(*)");
  int& ran = counter.ran;
  auto count = [&](const char* sql) {
    Recordset rs;
    rs.Open(sql, c);
    return rs.RecordCount();
  };
  const char* list = "select id from t where 1=1 order by id";
  // {what happens first, the count then, the count queries run so far}
  const std::tuple<std::function<void()>, int, int> steps[] = {
      {[] {}, 3, 1},
      {[] {}, 3, 1},                                              // kept
      {[&] { db.Run({"insert into t values(4)"}); }, 4, 2},       // another connection
      {[&] { c->Execute("delete from t where id = 1"); }, 3, 3},  // this one
      {[&] { c->Execute("begin"); }, 3, 4},                       // a transaction opens
      {[&] { c->Execute("insert into t values(9)"); }, 4, 5},
      {[] {}, 4, 6},  // not kept in a transaction
      {[&] { c->Execute("rollback"); }, 3, 7},
      {[] {}, 3, 7}};
  for (size_t i = 0; i < std::size(steps); ++i) {
    std::get<0>(steps[i])();
    EXPECT_EQ(count(list), std::get<1>(steps[i])) << i;
    EXPECT_EQ(ran, std::get<2>(steps[i])) << i;
  }
  // Calls of any function but count(), a view's too, are asked every time.
  for (const char* sql : {"select id from t where abs(id) > 0", "select id from late"}) {
    ran = 0;
    count(sql);
    count(sql);
    EXPECT_EQ(ran, 2) << sql;
  }
  // Nor is anything kept once another database was attached: its commits move no version here.
  c->Execute("attach database ':memory:' as aux");
  ran = 0;
  count(list);
  count(list);
  EXPECT_EQ(ran, 2);
}

// A list looks a name up on each of its rows. While the list is being read, its read transaction
// holds one snapshot of the database: a query with one row or none is read once in it. The
// snapshot's end (the list closed) forgets what was kept; a query with more rows is never kept.
TEST(SqliteDriver, OneRowQueriesAreReadOnceWhileAListHoldsItsSnapshot) {
  ScratchDatabase db;
  db.Run(
      {"create table t(id integer primary key, name text)", "insert into t values(1,'a'),(2,'b'),(3,'b')"});
  auto c = std::make_shared<Connection>();
  c->Open(db.connectionString);
  RunCounter counter(*c, "select name");
  int& ran = counter.ran;
  auto first = [&](const char* sql) {  // as a look-up reads: the first row, then closed
    Recordset rs;
    rs.Open(sql, c);
    return rs.Eof() ? std::string("-") : rs.Field(0).Text();
  };
  auto all = [&](const char* sql) {
    Recordset rs;
    std::string names;
    for (rs.Open(sql, c); !rs.Eof(); rs.MoveNext()) names += rs.Field("NAME").Text();
    return names;
  };
  {
    Recordset list;
    list.Open("select id from t order by id", c);
    // {query, what it answers, queries run so far}
    const std::tuple<std::function<std::string()>, std::string, int> steps[] = {
        {[&] { return first("select name from t where id=1"); }, "a", 1},
        {[&] {
           db.Run({"update t set name='z' where id=1"});  // another connection's commit
           return first("select name from t where id=1");
         },
         "a", 1},
        {[&] { return all("select name from t where id=1"); }, "a", 1},
        {[&] { return first("select name from t where id=9"); }, "-", 2},
        {[&] { return all("select name from t where id=9"); }, "", 2},
        {[&] { return all("select name from t where name='b'"); }, "bb", 3},
        {[&] { return all("select name from t where name='b'"); }, "bb", 4}};
    for (size_t i = 0; i < std::size(steps); ++i) {
      EXPECT_EQ(std::get<0>(steps[i])(), std::get<1>(steps[i])) << i;
      EXPECT_EQ(ran, std::get<2>(steps[i])) << i;
    }
  }
  EXPECT_EQ(first("select name from t where id=1"), "z");
  EXPECT_EQ(first("select name from t where id=1"), "z");
  EXPECT_EQ(ran, 6);
}

// A database file moved away under a running program (a restore, an operator's mv) must not take
// the next writes with it: a pooled handle of the moved file is dropped, and the path is opened anew.
TEST(SqliteDriver, AHandleWhoseFileWasMovedIsNotReused) {
  ScratchDatabase db;
  db.Run({"create table t(id integer)", "insert into t values(1)"});
  std::filesystem::rename(db.file, db.file.string() + ".moved");
  for (const char* side : {"-wal", "-shm"}) std::filesystem::remove(db.file.string() + side);
  Connection c;
  c.Open(db.connectionString);
  EXPECT_THAT([&] { c.Execute("insert into t values(2)"); },
              ThrowsMessage<Error>(::testing::HasSubstr("no such table")));
}

}  // namespace corvane::ado::testing
