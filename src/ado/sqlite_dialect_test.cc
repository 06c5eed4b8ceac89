#include "ado/sqlite_dialect.h"

#include <gtest/gtest.h>

#include "ado/sql_tokens.h"
#include "corvane/error.h"

namespace corvane::ado {
namespace {

using detail::AdaptForSqlite;

struct Case {
  const char* in;
  const char* out;
};

const Case kRewritten[] = {
    // select top N
    {"select top 1 a,b from t", "select a,b from t limit 1"},
    {"SELECT TOP 5 * FROM t ORDER BY a DESC", "SELECT * FROM t ORDER BY a DESC limit 5"},
    {"  select top (3) a from t order by a ", "  select a from t order by a limit 3 "},
    {"select distinct top 2 a from t", "select distinct a from t limit 2"},
    {"select top 1 a from t;", "select a from t limit 1;"},
    {"select top 1 a from t -- newest\n", "select a from t limit 1 -- newest\n"},
    {"select top 1 a=b from t", "select b as a from t limit 1"},
    // insert without into
    {" insert t(a,b) values(1,'x')", " insert into t(a,b) values(1,'x')"},
    {"insert  AccessGroup(accessGroupName,systemID) values('g',1)",
     "insert into  AccessGroup(accessGroupName,systemID) values('g',1)"},
    {"insert t (a) values (1)", "insert into t (a) values (1)"},
    {"INSERT  T values(1)", "INSERT into  T values(1)"},
    {"insert [my table](a) values(1)", "insert into [my table](a) values(1)"},
    // delete without from
    {" delete t  where dept=3 and id = 7", " delete from t  where dept=3 and id = 7"},
    {"DELETE person", "DELETE from person"},
    // alias=expr in the select list
    {"select planID,planStartTime,Type1ID=personPlan.planAddrTypeID,Type1=planAddrType.planAddrTypeName "
     "from personPlan,planAddrType where personPlan.planAddrTypeID=planAddrType.planAddrTypeID and "
     "personID=3 and planstartTime<='2026-11-02' Order by planstartTime ",
     "select planID,planStartTime,personPlan.planAddrTypeID as Type1ID,planAddrType.planAddrTypeName as "
     "Type1 from personPlan,planAddrType where personPlan.planAddrTypeID=planAddrType.planAddrTypeID and "
     "personID=3 and planstartTime<='2026-11-02' Order by planstartTime "},
    {"select a, n = count(*) from t group by a", "select a, count(*) as n from t group by a"},
    {"select x=(select max(y) from u where u.k=t.k), z from t",
     "select (select max(y) from u where u.k=t.k) as x, z from t"},
    {"select [full name]=name from t", "select name as [full name] from t"},
    {"select s='a=b' from t", "select 'a=b' as s from t"},
    {"select n=1", "select 1 as n"},
};

TEST(AdaptForSqlite, RewritesTheSqlServerForms) {
  for (const Case& c : kRewritten) EXPECT_EQ(AdaptForSqlite(c.in), c.out) << c.in;
}

const char* const kUnchanged[] = {
    "select top, x from t",
    "select top from t",
    "select a from t where top=1",
    "select a from t where a=1 and b<=2 and c>=3 and d!=4 and e==5 and f<>6",
    "select a<=b, c>=d, e==f, g!=h from t",
    "select 'x=y', \"q=r\" from t",
    "select t.a=1 from t",
    "select f(a=1) from t",
    "select a from t where b in (select c=d from u)",
    " INSERT INTO accessmenu(accessgroupid, accessmenutype, accessmenuid) VALUES ( 5,1,3)",
    "insert or replace into t(a) values(1)",
    "delete from   AccessGroup where accessGroupID=3 and systemid=1",
    " update t set a=1 where b=2",
    "update t se",
    "Select * from accessMenu where accessGroupID=4",
    "create table t(top int, a text)",
    "",
    "   ",
    "select 1 -- top 5\n",
    "/* select top 1 */ select a from t",
};

TEST(AdaptForSqlite, LeavesEverythingElseByteForByte) {
  for (const char* sql : kUnchanged) EXPECT_EQ(AdaptForSqlite(sql), sql) << sql;
}

TEST(AdaptForSqlite, LooksOnlyAtTheFirstStatement) {
  EXPECT_EQ(AdaptForSqlite("insert t(a) values(1); delete t"), "insert into t(a) values(1); delete t");
  EXPECT_EQ(AdaptForSqlite("select top 1 a from t; select b from u"),
            "select a from t limit 1; select b from u");
}

TEST(AdaptForSqlite, UnterminatedQuotesDoNotHideOrLoseText) {
  EXPECT_EQ(AdaptForSqlite("select a=1 from t where b='it''s"), "select 1 as a from t where b='it''s");
  EXPECT_EQ(AdaptForSqlite("select a from t where b='x=1, y=2"), "select a from t where b='x=1, y=2");
}

TEST(SqlitePagingQueries, CountAndOffsetWrapTheStatementBody) {
  using detail::SqliteCountQuery;
  using detail::SqliteOffsetQuery;
  // The count leaves the order out (it would walk a sort index row by row), unless a LIMIT needs it.
  EXPECT_EQ(SqliteCountQuery("select a from t order by a "), "select count(*) from (select a from t )");
  EXPECT_EQ(SqliteCountQuery("select a from t order by a limit 5"),
            "select count(*) from (select a from t order by a limit 5)");
  EXPECT_EQ(SqliteCountQuery("select a, row_number() over (order by a) from t"),
            "select count(*) from (select a, row_number() over (order by a) from t)");
  EXPECT_EQ(SqliteCountQuery("select a from t; -- x"), "select count(*) from (select a from t)");
  EXPECT_EQ(SqliteOffsetQuery("select a from t order by a ", 40),
            "select a from t order by a limit -1 offset 40");
  EXPECT_EQ(SqliteOffsetQuery("select a from t -- tail", 0), "select a from t limit -1 offset 0");
  EXPECT_EQ(SqliteOffsetQuery("select a from t limit 30", 20),
            "select * from (select a from t limit 30) limit -1 offset 20");
  // A LIMIT inside a subquery is not the statement's own.
  EXPECT_EQ(SqliteOffsetQuery("select a from t where a in (select b from u limit 2)", 5),
            "select a from t where a in (select b from u limit 2) limit -1 offset 5");
  EXPECT_EQ(SqliteOffsetQuery("select a from t where b='limit'", 5),
            "select a from t where b='limit' limit -1 offset 5");
}

TEST(SqlTokens, QuotedTextsAreSingleTokensAndCoverEveryByte) {
  std::string sql = "select [a]]b], \"c\"\"d\", 'e''f' -- g\n/* h */x<=y";
  std::vector<detail::Token> tokens = detail::Tokenize(sql);
  std::string joined;
  size_t at = 0;
  for (const detail::Token& t : tokens) {
    EXPECT_EQ(t.begin, at);
    joined += t.Text(sql);
    at = t.end;
  }
  EXPECT_EQ(joined, sql);
  std::vector<std::string> significant;
  for (const detail::Token& t : tokens)
    if (t.IsSignificant()) significant.emplace_back(t.Text(sql));
  EXPECT_EQ(significant, (std::vector<std::string>{"select", "[a]", "]", "b", "]", ",", "\"c\"\"d\"", ",",
                                                   "'e''f'", "x", "<=", "y"}));
}

TEST(AdaptForSqlite, RefusesAnEmptyInListAsSqlServerDoes) {
  try {
    AdaptForSqlite(" Select * from Menu where  menuFatherID is null and menuid in () and systemID  =1");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), Error::kDatabaseError);
    EXPECT_EQ(e.Description(), "Incorrect syntax near ')'.");
  }
  EXPECT_EQ(AdaptForSqlite("select a from t where b in (1) and c='in ()'"),
            "select a from t where b in (1) and c='in ()'");
}

}  // namespace
}  // namespace corvane::ado
