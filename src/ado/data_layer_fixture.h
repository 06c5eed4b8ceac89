// The data-layer suite runs once per backend: each test gets the connection string of a fresh, empty
// database and knows nothing else of the backend, so its SQL keeps to what every backend reads (the
// components' dialect, portable types). SQLite is always there; another backend joins by adding an
// entry to Backends() that makes a fresh database and answers its connection string.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/ado.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::ado::testing {

using corvane::testing::ErrorNumber;
using ::testing::ThrowsMessage;  // the description of a corvane::Error

struct Backend {
  std::string name;
  std::function<std::string()> freshDatabase;
};
inline void PrintTo(const Backend& backend, std::ostream* os) { *os << backend.name; }

inline std::vector<Backend> Backends() {
  return {{"SQLite", [] { return corvane::testing::ScratchDatabase().connectionString; }}};
}

class DataLayerTest : public ::testing::TestWithParam<Backend> {
 protected:
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
