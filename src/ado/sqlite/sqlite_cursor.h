// A statement of a SQLite session, stepped lazily: one sqlite3_step per row asked for.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "ado/driver.h"

namespace corvane::ado::detail {

class SqliteSession;

class SqliteCursor final : public Cursor {
 public:
  // Takes `stmt`, acquired from the session's handle for `sql`; gives it back when destroyed.
  SqliteCursor(std::shared_ptr<SqliteSession> session, std::string sql, sqlite3_stmt* stmt);
  ~SqliteCursor() override;

  int ColumnCount() const override { return static_cast<int>(names_.size()); }
  const std::string& ColumnName(int column) const override { return names_[column]; }
  int ColumnType(int column) const override;
  bool Step() override;
  Variant Value(int column) const override;
  int64_t Run() override;

 private:
  [[noreturn]] void Fail();

  std::shared_ptr<SqliteSession> session_;
  std::string sql_;
  sqlite3_stmt* stmt_;
  std::vector<std::string> names_;
  std::vector<int> declaredTypes_;  // adEmpty where nothing is declared
  bool onRow_ = false;
};

}  // namespace corvane::ado::detail
