// The SQLite dialect adapter's texts: what it rewrites, what it leaves alone byte for byte, what it
// refuses, and the count and offset texts paging derives from a statement.
#include "ado/sql_dialect.h"

#include "ado/data_layer_fixture.h"

namespace corvane::ado::testing {

using detail::AdaptForSqlite;

TEST(AdaptForSqlite, RewritesTheSqlServerForms) {
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      // select top N: the limit goes after the statement's last token, before a ";" or a comment
      {"  select top (3) a from t order by a ", "  select a from t order by a limit 3 "},
      {"select distinct top 2 a from t", "select distinct a from t limit 2"},
      {"select top 1 a from t; select b from u", "select a from t limit 1; select b from u"},
      {"select top 1 a from t -- newest\n", "select a from t limit 1 -- newest\n"},
      {"select top 1 a=b from t", "select b as a from t limit 1"},
      // insert without into, delete without from; a second statement is left alone
      {"insert t (a) values (1); delete t", "insert into t (a) values (1); delete t"},
      {"insert [my table](a) values(1)", "insert into [my table](a) values(1)"},
      {" delete t  where id = 7", " delete from t  where id = 7"}, {"DELETE person", "DELETE from person"},
      // alias=expr among the top-level items of the select list; quotes hide what they hold
      {"select planID,Type1ID=p.typeID,Type1=a.name from p,a where p.typeID=a.typeID and personID=3",
       "select planID,p.typeID as Type1ID,a.name as Type1 from p,a where p.typeID=a.typeID and personID=3"},
      {"select x=(select max(y) from u where u.k=t.k), z from t",
       "select (select max(y) from u where u.k=t.k) as x, z from t"},
      {"select [full name]=name, \"a\"\"b\"=1 from t", "select name as [full name], 1 as \"a\"\"b\" from t"},
      {"select s='a=b', x='it''s', y=2 from t", "select 'a=b' as s, 'it''s' as x, 2 as y from t"},
      {"select n=1", "select 1 as n"},
      {"select a=1 from t where b='it''s", "select 1 as a from t where b='it''s"},  // unterminated
  };
  // clang-format on
  for (const auto& [in, out] : cases) EXPECT_EQ(AdaptForSqlite(in), out) << in;
}

TEST(AdaptForSqlite, LeavesEverythingElseByteForByte) {
  const char* const unchanged[] = {"select top, x from t",
                                   "select top from t",
                                   "select a from t where top=1",
                                   "select a from t where a=1 and b<=2 and c>=3 and d!=4 and e==5 and f<>6",
                                   "select a<=b, c>=d, e==f, g!=h from t",
                                   "select 'x=y', \"q=r\" from t",
                                   "select t.a=1 from t",
                                   "select f(a=1) from t",
                                   "select a from t where b in (select c=d from u)",
                                   " INSERT INTO accessmenu(accessgroupid, accessmenuid) VALUES ( 5,3)",
                                   "insert or replace into t(a) values(1)",
                                   "delete from   AccessGroup where accessGroupID=3",
                                   " update t set a=1 where b=2",
                                   "create table t(top int, a text)",
                                   "",
                                   "   ",
                                   "select 1 -- top 5\n",
                                   "/* select top 1 */ select a from t",
                                   "select a from t where b='x=1, y=2",
                                   "select a from t where b in (1) and c='in ()'"};
  for (const char* sql : unchanged) EXPECT_EQ(AdaptForSqlite(sql), sql) << sql;
}

TEST(AdaptForSqlite, RefusesAnEmptyInListAsSqlServerDoes) {
  const char* sql = " Select * from Menu where  menuFatherID is null and menuid in () and systemID  =1";
  EXPECT_EQ(ErrorNumber([&] { AdaptForSqlite(sql); }), Error::kDatabaseError);
  EXPECT_THAT([&] { AdaptForSqlite(sql); }, ThrowsMessage<Error>("Incorrect syntax near ')'."));
}

TEST(SqlitePagingQueries, TheCountLeavesTheOrderOutAndTheOffsetKeepsALimit) {
  const std::pair<const char*, const char*> counts[] = {
      {"select a from t order by a ", "select count(*) from (select a from t )"},
      {"select a from t order by a limit 5", "select count(*) from (select a from t order by a limit 5)"},
      {"select a, row_number() over (order by a) from t",
       "select count(*) from (select a, row_number() over (order by a) from t)"},
      {"select a from t; -- x", "select count(*) from (select a from t)"}};
  for (const auto& [in, out] : counts) EXPECT_EQ(detail::CountQuery(detail::Dialect::SQLite, in), out) << in;
  const std::pair<const char*, const char*> offsets[] = {
      {"select a from t order by a -- tail", "select a from t order by a limit -1 offset 40"},
      {"select a from t limit 30", "select * from (select a from t limit 30) limit -1 offset 40"}};
  for (const auto& [in, out] : offsets)
    EXPECT_EQ(detail::OffsetQuery(detail::Dialect::SQLite, in, 40), out) << in;
}

}  // namespace corvane::ado::testing

namespace corvane::ado::testing {

using detail::Dialect;

TEST(AdaptForServers, NamesDatesJoinedTextsAndTableTypesInEachServersWords) {
  // clang-format off
  const std::tuple<Dialect, const char*, const char*> cases[] = {
      {Dialect::PostgreSQL, "select top 1 [planStartTime], Who=[person Name] from [personPlan] where a='[x]'",
       "select \"planstarttime\", \"person name\" as Who from \"personplan\" where a='[x]' limit 1"},
      {Dialect::MariaDB, "select top 1 [planStartTime] from [personPlan]",
       "select `planStartTime` from `personPlan` limit 1"},
      {Dialect::PostgreSQL, "insert t(a,b) values(getdate(), 'a'+name+'b')",
       "insert into t(a,b) values(localtimestamp(0), 'a'||name||'b')"},
      {Dialect::MariaDB, "select x=getdate ( ), a+b, 'a' + 1 from t", "select now() as x, a+b, 'a' || 1 from t"},
      {Dialect::PostgreSQL,
       "create table p(planID INTEGER PRIMARY KEY, t DATETIME, n NVARCHAR(5), b image, s tinyint, "
       "datetime int)",
       "create table p(planID INTEGER generated by default as identity PRIMARY KEY, t timestamp(0), "
       "n varchar(5), b bytea, s smallint, datetime int)"},
      {Dialect::MariaDB, "create table p(planID INTEGER PRIMARY KEY, t DATETIME, n ntext)",
       "create table p(planID INTEGER PRIMARY KEY auto_increment, t DATETIME, n longtext)"},
      {Dialect::SqlServer, "select top 1 [a]=getdate()+'x' from t; delete t", nullptr},
  };
  // clang-format on
  for (const auto& [dialect, in, out] : cases) EXPECT_EQ(detail::Adapt(dialect, in), out ? out : in) << in;
  EXPECT_EQ(detail::DialectOfProduct("PostgreSQL"), Dialect::PostgreSQL);
  EXPECT_EQ(detail::DialectOfProduct("MariaDB"), Dialect::MariaDB);
  EXPECT_EQ(detail::DialectOfProduct("MySQL"), Dialect::MariaDB);
  EXPECT_EQ(detail::DialectOfProduct("Microsoft SQL Server"), Dialect::SqlServer);
}

TEST(AdaptForServers, CountAndPageTextsAndStackedStatementsRefused) {
  // clang-format off
  const std::tuple<Dialect, int64_t, const char*, const char*> pages[] = {
      {Dialect::PostgreSQL, 0, "select a from t order by a", "select a from t order by a offset 40"},
      {Dialect::PostgreSQL, 20, "select a from t limit 5", "select * from (select a from t limit 5) as corvane_page limit 20 offset 40"},
      {Dialect::MariaDB, 0, "select a from t", "select a from t limit 18446744073709551615 offset 40"},
      {Dialect::MariaDB, 20, "select a from t order by a; ", "select a from t order by a limit 20 offset 40"},
      {Dialect::SqlServer, 20, "select a from t order by a", "select a from t order by a offset 40 rows fetch next 20 rows only"},
      {Dialect::SqlServer, 0, "select top 9 a from t order by a",
       "select * from (select top 9 a from t order by a) as corvane_page order by (select null) offset 40 rows"},
  };
  // clang-format on
  for (const auto& [dialect, rows, in, out] : pages)
    EXPECT_EQ(detail::OffsetQuery(dialect, in, 40, rows), out) << in;
  EXPECT_EQ(detail::CountQuery(Dialect::MariaDB, "select a from t order by a"),
            "select count(*) from (select a from t ) as corvane_rows");
  for (const char* stacked : {"delete from t; select 1", "select 1; -- x\n drop table t"})
    EXPECT_THAT([&] { detail::RefuseStackedStatements(stacked); },
                ThrowsMessage<Error>(::testing::HasSubstr("only one statement")));
  EXPECT_NO_THROW(detail::RefuseStackedStatements("select ';' from t ;; -- done\n /* x */ "));
}

}  // namespace corvane::ado::testing
