#include "options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace corvane::server {
namespace {

using namespace ::testing;

ServerOptions Parse(std::vector<const char*> args, bool* help = nullptr) {
  args.insert(args.begin(), "corvane-server");
  return ParseOptions(static_cast<int>(args.size()), args.data(), help);
}

TEST(OptionsTest, EveryOptionInBothSpellingsAndInTheHelp) {
  bool help = false;
  ServerOptions o = Parse(
      {"--port", "0", "--bind=0.0.0.0", "--site=/www", "--db", "x.db", "--codepage=65001", "--drives", "/d",
       "--threads=3", "--session-timeout", "5", "--max-body", "1024", "--no-access-log", "--help"},
      &help);
  EXPECT_EQ(std::tie(o.port, o.bind, o.site, o.db, o.codePage, o.drives, o.threads, o.sessionTimeoutMinutes,
                     o.maxBodyBytes, o.accessLog, help),
            std::make_tuple(0, "0.0.0.0", "/www", "x.db", 65001, "/d", 3, 5, size_t{1024}, false, true));
  for (const char* name : {"--port", "--bind", "--site", "--db", "--codepage", "--drives", "--threads",
                           "--session-timeout", "--max-body", "--no-access-log"})
    EXPECT_THAT(OptionsUsage(), HasSubstr(name));
}

TEST(OptionsTest, BadCommandLinesAreRefusedWithTheOptionNamed) {
  const std::vector<std::vector<const char*>> bad = {
      {"--port", "http"},     {"--port", "70000"}, {"--port=80x"},        {"--bind"},
      {"--codepage", "1252"}, {"--threads", "0"},  {"--threads", "1025"}, {"--session-timeout", "0"},
      {"--max-body", "-1"},   {"--db="},           {"--colour", "red"},   {"stray"},
  };
  for (const auto& args : bad) {
    std::string name = args[0];
    EXPECT_THAT([&] { Parse(args); }, ThrowsMessage<OptionsError>(HasSubstr(name.substr(0, name.find('=')))))
        << name;
  }
}

TEST(OptionsTest, DatabaseArgumentBecomesAConnectionString) {
  EXPECT_EQ(ConnectionStringFor("data/a.db"), "Provider=SQLite;Data Source=data/a.db");
  EXPECT_EQ(ConnectionStringFor("DSN=office;UID=sa"), "DSN=office;UID=sa");
  EXPECT_EQ(SqliteFileOf("Provider=SQLite;Data Source=data/a.db"), "data/a.db");
  EXPECT_EQ(SqliteFileOf("provider=sqlite;data source=/x/b.db;Mode=rw"), "/x/b.db");
  EXPECT_EQ(SqliteFileOf("DSN=office;UID=sa"), "");
}

}  // namespace
}  // namespace corvane::server
