#include "options.h"

#include <gtest/gtest.h>

#include <vector>

namespace corvane::server {
namespace {

ServerOptions Parse(std::vector<const char*> args, bool* help = nullptr) {
  args.insert(args.begin(), "corvane-server");
  return ParseOptions(static_cast<int>(args.size()), args.data(), help);
}

TEST(OptionsTest, DefaultsWithoutArguments) {
  ServerOptions o = Parse({});
  EXPECT_EQ(o.port, 8080);
  EXPECT_EQ(o.bind, "127.0.0.1");
  EXPECT_EQ(o.codePage, 936);
  EXPECT_EQ(o.sessionTimeoutMinutes, 20);
  EXPECT_EQ(o.maxBodyBytes, 32u * 1024 * 1024);
  EXPECT_TRUE(o.accessLog);
  EXPECT_TRUE(o.site.empty());
}

TEST(OptionsTest, BothSpellingsOfAValue) {
  ServerOptions o = Parse({"--port", "9000", "--bind=0.0.0.0", "--codepage=65001", "--db", "x.db",
                           "--drives", "/tmp/d", "--threads=3", "--max-body", "1024", "--no-access-log",
                           "--site=/srv/www", "--session-timeout", "5"});
  EXPECT_EQ(o.port, 9000);
  EXPECT_EQ(o.bind, "0.0.0.0");
  EXPECT_EQ(o.codePage, 65001);
  EXPECT_EQ(o.db, "x.db");
  EXPECT_EQ(o.drives, "/tmp/d");
  EXPECT_EQ(o.threads, 3);
  EXPECT_EQ(o.maxBodyBytes, 1024u);
  EXPECT_FALSE(o.accessLog);
  EXPECT_EQ(o.site, "/srv/www");
  EXPECT_EQ(o.sessionTimeoutMinutes, 5);
}

TEST(OptionsTest, BadCommandLinesAreRefusedWithTheOptionNamed) {
  const std::vector<std::vector<const char*>> bad = {
      {"--port", "http"}, {"--port", "70000"}, {"--port"},         {"--codepage", "1252"},
      {"--threads", "0"}, {"--colour", "red"}, {"stray"},          {"--db="},
      {"--port=80x"},     {"--max-body", "-1"}, {"--session-timeout", "0"},
  };
  for (const auto& args : bad) {
    try {
      Parse(args);
      ADD_FAILURE() << "accepted " << args[0];
    } catch (const OptionsError& e) {
      std::string name = args[0];
      name = name.substr(0, name.find('='));
      EXPECT_NE(std::string(e.what()).find(name), std::string::npos) << e.what();
    }
  }
}

TEST(OptionsTest, HelpIsReported) {
  bool help = false;
  Parse({"--help"}, &help);
  EXPECT_TRUE(help);
  EXPECT_NE(OptionsUsage().find("--codepage"), std::string::npos);
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
