// Which connection strings go to ODBC, and the text the driver manager gets for each.
#include "ado/odbc/odbc_connection_text.h"

#include <gtest/gtest.h>

#include "ado/connection_string.h"
#include "ado/data_layer_fixture.h"

namespace corvane::ado::detail {

TEST(OdbcConnectionText, BracesKeepSemicolonsAndTheTargetSaysWhatTheDriverManagerGets) {
  ConnectionString cs = ConnectionString::Parse("Driver={PostgreSQL Unicode}; Pwd={a;b}}c} ;uid=x");
  EXPECT_EQ(cs.Get("driver"), "PostgreSQL Unicode");
  EXPECT_EQ(cs.Get("pwd"), "a;b}c");
  EXPECT_EQ(cs.Get("uid"), "x");
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"Driver={PostgreSQL Unicode};Server=h;Pwd={a;b}}c}",
       "driver=PostgreSQL Unicode;server=h;pwd={a;b}}c};boolsaschar=0;commlog=0;debug=0"},
      {"Driver={PostgreSQL Unicode};BoolsAsChar=1", "driver=PostgreSQL Unicode;boolsaschar=1;commlog=0;debug=0"},
      {"DSN=office;Uid=sa; Pwd = x ;uid=me", "dsn=office;pwd=x;uid=me"},
      {"Provider=MSDASQL;Driver={MariaDB Unicode};Database=db", "driver=MariaDB Unicode;database=db"},
      {"Provider=SQLOLEDB.1;Data Source=db1,1433;Initial Catalog=office;User ID=sa;Password=p;w",
       "Driver={FreeTDS};Server=db1;Port=1433;Database=office;Uid=sa;Pwd=p;TDS_Version=7.4;ClientCharset=UTF-8"},
      {"Provider=SQLNCLI11;Server=db1;Database=office;Password={x;y}",
       "Driver={FreeTDS};Server=db1;Database=office;Pwd={x;y};TDS_Version=7.4;ClientCharset=UTF-8"},
  };
  // clang-format on
  for (const auto& [in, out] : cases) {
    std::optional<OdbcTarget> target = OdbcTargetOf(ConnectionString::Parse(in));
    ASSERT_TRUE(target) << in;
    EXPECT_EQ(target->text, out) << in;
  }
  EXPECT_EQ(OdbcTargetOf(ConnectionString::Parse("Provider=SQLOLEDB;Password={x;y}"))->secret, "x;y");
  for (const char* other : {"Provider=SQLite;Data Source=a.db", "a.db", "Provider=Microsoft.Jet.OLEDB.4.0"})
    EXPECT_FALSE(OdbcTargetOf(ConnectionString::Parse(other))) << other;
}

// No SQL Server runs here: the mapped string reaches FreeTDS, which answers that nothing listens.
TEST(OdbcConnectionText, AnAdoStyleSqlServerStringReachesFreeTds) {
  using ::testing::HasSubstr;
  EXPECT_THAT([] { Connection().Open("Provider=SQLOLEDB;Data Source=127.0.0.1,1;User ID=sa;Password=pw;x"); },
              ado::testing::ThrowsMessage<Error>(
                  ::testing::AllOf(HasSubstr("SQLSTATE"), ::testing::Not(HasSubstr("pw;x")))));
}

}  // namespace corvane::ado::detail
