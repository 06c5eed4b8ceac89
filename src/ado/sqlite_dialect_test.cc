// The SQLite dialect adapter's texts: what it rewrites, what it leaves alone byte for byte, what it
// refuses, and the count and offset texts paging derives from a statement.
#include "ado/sqlite_dialect.h"

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
  for (const auto& [in, out] : counts) EXPECT_EQ(detail::SqliteCountQuery(in), out) << in;
  const std::pair<const char*, const char*> offsets[] = {
      {"select a from t order by a -- tail", "select a from t order by a limit -1 offset 40"},
      {"select a from t limit 30", "select * from (select a from t limit 30) limit -1 offset 40"}};
  for (const auto& [in, out] : offsets) EXPECT_EQ(detail::SqliteOffsetQuery(in, 40), out) << in;
}

}  // namespace corvane::ado::testing
