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
  // clang-format off
  for (const char* name : {"--port", "--bind", "--site", "--db", "--codepage", "--drives", "--threads",
                           "--session-timeout", "--max-body", "--no-access-log", "--io-threads",
                           "--session-lifetime", "--max-sessions", "--max-header", "--header-timeout",
                           "--keep-alive-timeout", "--max-connections-per-client", "--tls-cert", "--tls-key",
                           "--log-json"})
    // clang-format on
    EXPECT_THAT(OptionsUsage(), HasSubstr(name));
}

TEST(OptionsTest, TheHostsLimitsAndTls) {
  ServerOptions o =
      Parse({"--io-threads=2", "--session-lifetime", "60", "--max-sessions=10", "--max-header", "8192",
             "--header-timeout=3", "--keep-alive-timeout", "7", "--max-connections-per-client=5",
             "--tls-cert", "c.pem", "--tls-key=k.pem", "--log-json"});
  EXPECT_EQ(
      std::tie(o.ioThreads, o.sessionLifetimeMinutes, o.maxSessions, o.maxHeaderBytes, o.headerTimeoutMs,
               o.keepAliveTimeoutMs, o.maxConnectionsPerClient, o.tlsCert, o.tlsKey, o.logJson),
      std::make_tuple(2, 60, size_t{10}, size_t{8192}, 3000, 7000, 5, "c.pem", "k.pem", true));
  ServerOptions d;
  EXPECT_GE(d.threads, 2);  // twice the cores
  EXPECT_FALSE(d.logJson);
  // With sessions in Redis, twice the workers, unless told otherwise.
  EXPECT_EQ(Parse({"--sessions", "redis://cache"}).threads, 2 * d.threads);
  EXPECT_EQ(Parse({"--sessions", "redis://cache", "--threads", "3"}).threads, 3);
}

TEST(OptionsTest, BadCommandLinesAreRefusedWithTheOptionNamed) {
  // clang-format off
  const std::vector<std::vector<const char*>> bad = {
      {"--port", "http"},     {"--port", "70000"}, {"--port=80x"},        {"--bind"},
      {"--codepage", "1252"}, {"--threads", "0"},  {"--threads", "1025"}, {"--session-timeout", "0"},
      {"--max-body", "-1"},   {"--db="},           {"--colour", "red"},   {"stray"},
      {"--header-timeout", "0"}, {"--max-connections-per-client", "0"}, {"--max-header", "10"},
      {"--tls-cert", "c.pem"},   {"--io-threads", "0"},
  };
  // clang-format on
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
