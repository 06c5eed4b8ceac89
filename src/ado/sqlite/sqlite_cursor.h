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
  // Keeps the query's row in the handle (SqliteHandle::KeepRow) if it turns out to have one at most:
  // for a cursor prepared while the handle holds a read snapshot. Only a pure read is kept (and only
  // a pure read is stepped once more to see that no second row follows).
  void KeepOneRow() { keep_ = statement_.pureRead; }

 private:
  [[noreturn]] void Fail();
  void Stopped();
  void TakeRow();
  void KeepRow();

  std::shared_ptr<SqliteSession> session_;
  std::string sql_;
  SqliteStatement statement_;
  bool onRow_ = false;
  bool keep_ = false;
  int rows_ = 0;
  std::shared_ptr<KeptRow> row_;
};

// A kept row (SqliteHandle::KeptRowOf) read again, as the cursor that read it gave it.
class KeptRowCursor final : public Cursor {
 public:
  explicit KeptRowCursor(std::shared_ptr<const KeptRow> row) : row_(std::move(row)) {}

  std::shared_ptr<const ColumnSet> Columns() const override { return row_->columns; }
  int ColumnType(int column) const override;
  bool Step() override;
  Variant Value(int column) const override { return row_->values[column]; }
  int64_t Run() override;

 private:
  std::shared_ptr<const KeptRow> row_;
  bool stepped_ = false, onRow_ = false;
};

}  // namespace corvane::ado::detail
