// What only a database server shows: its SQLSTATEs and messages, the types its driver reports, the
// connection it ends (an administrator's kill, a restart) and the pool that must not hand it out.
#include "ado/data_layer_fixture.h"
#include "ado/odbc/odbc_connection_text.h"

namespace corvane::ado::testing {

class OdbcServerTest : public DataLayerTest {
 protected:
  void Seed() override {
    if (GetParam().name == "SQLite") GTEST_SKIP() << "a server's behaviour";
  }
  bool pg() const { return GetParam().name == "PostgreSQL"; }
  std::string ServerString() const { return std::getenv(pg() ? "CORVANE_TEST_PG" : "CORVANE_TEST_MARIADB"); }
};

TEST_P(OdbcServerTest, ErrorsCarryTheSqlStateAndTheServersWordsButNeverThePassword) {
  auto c = Connect();
  EXPECT_THAT([&] { c->Execute("select * from nowhere"); },
              ThrowsMessage<Error>(::testing::HasSubstr(pg() ? "SQLSTATE 42P01" : "SQLSTATE 42S02")));
  c->Execute("create table t(id int primary key)");
  c->Execute("insert t(id) values(1)");
  EXPECT_THAT([&] { c->Execute("insert t(id) values(1)"); },
              ThrowsMessage<Error>(::testing::HasSubstr("SQLSTATE 23")));
  // The user's name as the password: the server's message names the user, and it comes masked.
  std::string wrong = ServerString();
  wrong = wrong.substr(0, wrong.rfind("Pwd=")) + "Pwd=corvane";
  try {
    Connection().Open(wrong);
    ADD_FAILURE() << "opened with a wrong password";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), Error::kDatabaseError);
    // psqlODBC reports a refused login as a failed connection.
    EXPECT_THAT(e.Description(), ::testing::HasSubstr(pg() ? "SQLSTATE 08001" : "SQLSTATE 28000"));
    EXPECT_THAT(e.Description(), ::testing::Not(::testing::HasSubstr("corvane")));
  }
  std::string closed = ServerString();
  closed.replace(closed.find("Port=") + 5, closed.find(';', closed.find("Port=")) - closed.find("Port=") - 5,
                 "1");
  EXPECT_THAT([&] { Connection().Open(closed); }, ThrowsMessage<Error>(::testing::HasSubstr("SQLSTATE")));
}

TEST_P(OdbcServerTest, TypeCodesFromTheColumnTypesTheDriverReports) {
  Run(
      {"create table ty(i int, s smallint, b bigint, n numeric(10,2), f double precision, d date, "
       "ts timestamp null, c char(3), v varchar(9), tx text)",
       "insert ty(i,s,b,n,f,d,ts,c,v,tx) values(-7,3,5000000000,12.5,0.25,'2026-02-28',"
       "'2026-11-24 13:05:09','ab','x','long')"});
  const std::tuple<const char*, int, Variant> cases[] = {
      {"i", adInteger, int32_t{-7}},
      {"s", adSmallInt, int16_t{3}},
      {"b", adBigInt, 5e9},
      {"n", adNumeric, 12.5},
      {"f", adDouble, 0.25},
      {"d", adDBTimeStamp, Variant::Date(2026, 2, 28)},
      {"ts", adDBTimeStamp, Variant::Date(2026, 11, 24, 13, 5, 9)},
      {"c", adWChar, pg() ? "ab " : "ab"},
      {"v", adVarWChar, "x"},
      {"tx", adLongVarWChar, "long"}};
  Recordset rs;
  rs.Open("select * from ty", Connect());
  for (const auto& [name, type, value] : cases)
    EXPECT_EQ(std::pair(rs.FieldType(name), rs.Field(name)), std::pair(type, value)) << name;
}

// An administrator ends a pooled connection while it idles: the next Open gets a live one.
TEST_P(OdbcServerTest, AConnectionTheServerEndedIsDroppedFromThePool) {
  const std::string idSql = pg() ? "select pg_backend_pid()" : "select connection_id()";
  auto killer = Connect();
  auto victim = Connect();
  const int32_t id = Ids(*[&] {
    auto rs = std::make_shared<Recordset>();
    rs->Open(idSql, victim);
    return rs;
  }())[0];
  victim->Close();  // back to the pool
  if (pg()) {
    Recordset rs;
    rs.Open("select pg_terminate_backend(" + std::to_string(id) + ")", killer);
  } else {
    killer->Execute("kill " + std::to_string(id));
  }
  auto next = Connect();
  Recordset rs;
  rs.Open(idSql, next);
  EXPECT_NE(rs.Field(0).ToLong(), id);
}

CORVANE_ON_EVERY_BACKEND(OdbcServerTest);

}  // namespace corvane::ado::testing
