// The data-layer suite runs once per backend: each test gets the connection string of a fresh, empty
// database and knows nothing else of the backend, so its SQL keeps to what every backend reads (the
// components' dialect, portable types). SQLite is always there; PostgreSQL and MariaDB take part when
// the test command has started them (scripts/db-servers.sh puts their ODBC connection strings in
// CORVANE_TEST_PG and CORVANE_TEST_MARIADB); without the variable their tests are skipped, saying so.
// On a server each test gets a schema (PostgreSQL) or database (MariaDB) of its own, dropped after.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "ado/odbc/odbc_pool.h"
#include "corvane/ado.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::ado::testing {

using corvane::testing::ErrorNumber;
using ::testing::ThrowsMessage;  // the description of a corvane::Error

struct Backend {
  std::string name;
  // A fresh database's connection string; "" when the backend is not there.
  std::function<std::string()> freshDatabase;
  std::function<void(const std::string&)> dropDatabase = [](const std::string&) {};
  std::string missing;  // why the backend is not there
};
inline void PrintTo(const Backend& backend, std::ostream* os) { *os << backend.name; }

// A name no other test of any process uses.
inline constexpr std::string_view kDatabasePrefix = "corvane_t";
inline std::string UniqueDatabaseName() {
  static std::atomic<int> counter{0};
  return std::string(kDatabasePrefix) + std::to_string(::getpid()) + "_" + std::to_string(counter++);
}

inline void RunOn(const std::string& cs, const std::string& sql) {
  Connection c;
  c.Open(cs);
  c.Execute(sql);
}

// A server backend from the connection string in `variable`; `fresh` makes a database on it and
// answers its connection string, `drop` drops it.
inline Backend ServerBackend(std::string name, const char* variable,
                             std::function<std::string(const std::string&, const std::string&)> fresh,
                             std::pair<std::string, std::string> dropStatement) {
  const char* base = std::getenv(variable);
  if (!base || !*base)
    return {std::move(name), [] { return std::string(); }, [](const std::string&) {},
            std::string(variable) +
                " is not set: start the servers with scripts/db-servers.sh (scripts/test.sh does)"};
  std::string server = base;
  return {std::move(name),
          [server, fresh] {
            std::string db = UniqueDatabaseName();
            return fresh(server, db);
          },
          [server, dropStatement](const std::string& cs) {
            detail::CloseIdleOdbcConnections(cs);
            std::string db = cs.substr(cs.rfind(kDatabasePrefix));
            db = db.substr(0, db.find_first_of(";}"));
            RunOn(server, dropStatement.first + db + dropStatement.second);
          },
          ""};
}

inline std::vector<Backend> Backends() {
  return {{"SQLite", [] { return corvane::testing::ScratchDatabase().connectionString; }},
          ServerBackend("PostgreSQL", "CORVANE_TEST_PG",
                        [](const std::string& server, const std::string& db) {
                          RunOn(server, "create schema " + db);
                          return server + ";ConnSettings={set search_path to " + db + "}";
                        },
                        {"drop schema if exists ", " cascade"}),
          ServerBackend("MariaDB", "CORVANE_TEST_MARIADB",
                        [](const std::string& server, const std::string& db) {
                          RunOn(server, "create database " + db);
                          return server + ";Database=" + db;
                        },
                        {"drop database if exists ", ""})};
}

class DataLayerTest : public ::testing::TestWithParam<Backend> {
 protected:
  // The tables a test starts with (SetUp creates them on the fresh database).
  virtual void Seed() {}
  void SetUp() override {
    if (cs.empty()) GTEST_SKIP() << GetParam().missing;
    Seed();
  }
  void TearDown() override {
    if (!cs.empty()) GetParam().dropDatabase(cs);
  }

  const std::string cs = GetParam().freshDatabase();

  std::shared_ptr<Connection> Connect() const {
    auto c = std::make_shared<Connection>();
    c->Open(cs);
    return c;
  }
  void Run(std::initializer_list<std::string_view> statements) const {
    for (auto c = Connect(); std::string_view s : statements) c->Execute(s);
  }
  // The first column of the rows from the current one on, and of the rows of `sql`.
  static std::vector<int32_t> Ids(Recordset& rs) {
    std::vector<int32_t> ids;
    for (; !rs.Eof(); rs.MoveNext()) ids.push_back(rs.Field(0).ToLong());
    return ids;
  }
  std::vector<int32_t> Ids(const std::string& sql) const {
    Recordset rs;
    rs.Open(sql, Variant(cs));
    return Ids(rs);
  }
};

}  // namespace corvane::ado::testing

#define CORVANE_ON_EVERY_BACKEND(Suite)                                                               \
  INSTANTIATE_TEST_SUITE_P(Backends, Suite, ::testing::ValuesIn(::corvane::ado::testing::Backends()), \
                           [](const auto& test) { return test.param.name; })
