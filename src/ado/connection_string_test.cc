#include "ado/connection_string.h"

#include <gtest/gtest.h>

namespace corvane::ado::detail {
namespace {

TEST(ConnectionString, KeysAnyCaseValuesTrimmedAndQuoted) {
  ConnectionString cs = ConnectionString::Parse(
      " Provider = SQLite ; DATA SOURCE=\"C:\\a;b.db\";User ID='o''neil';Empty=;junk;Password=x");
  EXPECT_EQ(cs.Get("provider"), "SQLite");
  EXPECT_EQ(cs.Get("Data Source"), "C:\\a;b.db");
  EXPECT_EQ(cs.Get("user id"), "o'neil");
  EXPECT_EQ(cs.Get("empty"), "");
  EXPECT_EQ(cs.Get("PASSWORD"), "x");
  EXPECT_EQ(cs.Get("junk"), std::nullopt);
  EXPECT_EQ(cs.BarePath(), "");
}

TEST(ConnectionString, LastRepeatedKeyWins) {
  EXPECT_EQ(ConnectionString::Parse("a=1;A=2").Get("a"), "2");
}

TEST(ConnectionString, TextWithoutEqualsIsABarePath) {
  ConnectionString cs = ConnectionString::Parse("  data/office.db ");
  EXPECT_EQ(cs.BarePath(), "data/office.db");
  EXPECT_EQ(cs.Get("provider"), std::nullopt);
}

}  // namespace
}  // namespace corvane::ado::detail
