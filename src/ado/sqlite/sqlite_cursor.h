// A statement of a SQLite session, stepped lazily: one sqlite3_step per row asked for.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "ado/driver.h"
#include "ado/sqlite/sqlite_handle.h"

namespace corvane::ado::detail {

class SqliteSession;

class SqliteCursor final : public Cursor {
 public:
  // Takes `statement`, acquired from the session's handle for `sql`; gives it back when destroyed.
  SqliteCursor(std::shared_ptr<SqliteSession> session, std::string sql, SqliteStatement statement);
  ~SqliteCursor() override;

  std::shared_ptr<const ColumnSet> Columns() const override { return statement_.columns; }
  int ColumnType(int column) const override;
  bool Step() override;
  Variant Value(int column) const override;
  int64_t Run() override;

  const SqliteStatement& Statement() const { return statement_; }

 private:
  [[noreturn]] void Fail();

  std::shared_ptr<SqliteSession> session_;
  std::string sql_;
  SqliteStatement statement_;
  bool onRow_ = false;
};

}  // namespace corvane::ado::detail
