#include "ado/sqlite/sqlite_cursor.h"

#include "ado/field_types.h"
#include "ado/sqlite/sqlite_driver.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

namespace {

// A column's type when no row says more: its declared type, else text.
int TypeOffRow(const SqliteColumns& columns, int column) {
  const int declared = columns.declaredTypes[column];
  return declared != adEmpty ? declared : adVarWChar;
}

StoredValue Stored(sqlite3_stmt* stmt, int column) {
  switch (sqlite3_column_type(stmt, column)) {
    case SQLITE_INTEGER: return sqlite3_column_int64(stmt, column);
    case SQLITE_FLOAT: return sqlite3_column_double(stmt, column);
    case SQLITE_TEXT: {
      auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, column));
      return std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(stmt, column)));
    }
    case SQLITE_BLOB: {
      auto* data = static_cast<const uint8_t*>(sqlite3_column_blob(stmt, column));
      return std::span<const uint8_t>(data, static_cast<size_t>(sqlite3_column_bytes(stmt, column)));
    }
    default: return StoredNull{};
  }
}

}  // namespace

SqliteCursor::SqliteCursor(std::shared_ptr<SqliteSession> session, std::string sql, SqliteStatement statement)
    : session_(std::move(session)), sql_(std::move(sql)), statement_(std::move(statement)) {}

SqliteCursor::~SqliteCursor() {
  // A look-up reads its one row and closes. Whether there is no second row is asked here, unless
  // the query scans a whole table to answer (the rest of the scan would cost more than keeping
  // saves).
  if (keep_ && onRow_ && rows_ == 1 &&
      sqlite3_stmt_status(statement_.stmt, SQLITE_STMTSTATUS_FULLSCAN_STEP, 0) == 0 &&
      sqlite3_step(statement_.stmt) == SQLITE_DONE)
    KeepRow();
  session_->handle().Release(std::move(sql_), std::move(statement_));
}

void SqliteCursor::Fail() {
  onRow_ = false;
  keep_ = false;
  std::string message = sqlite3_errmsg(session_->handle().db());
  sqlite3_reset(statement_.stmt);
  session_->handle().StatementStopped();
  throw Error::Database(message);
}

// The statement has run to its end.
void SqliteCursor::Stopped() {
  onRow_ = false;
  if (keep_ && rows_ <= 1) KeepRow();
  keep_ = false;
  session_->handle().StatementStopped();
}

void SqliteCursor::TakeRow() {
  auto row = std::make_shared<KeptRow>();
  row->columns = statement_.columns;
  const int n = static_cast<int>(statement_.columns->names.size());
  row->values.reserve(n);
  row->types.reserve(n);
  for (int i = 0; i < n; ++i) {
    row->values.push_back(Value(i));
    row->types.push_back(ColumnType(i));
  }
  row_ = std::move(row);
}

void SqliteCursor::KeepRow() {
  keep_ = false;
  // Only a pure read as first prepared; the columns must be those the row was read with.
  if (!statement_.pureRead || sqlite3_stmt_status(statement_.stmt, SQLITE_STMTSTATUS_REPREPARE, 0) != 0)
    return;
  if (!row_) {
    row_ = std::make_shared<KeptRow>();
    row_->columns = statement_.columns;
  }
  session_->handle().KeepRow(sql_, std::move(row_));
}

int SqliteCursor::ColumnType(int column) const {
  if (statement_.columns->declaredTypes[column] != adEmpty || !onRow_)
    return TypeOffRow(*statement_.columns, column);
  return TypeCodeOfStoredValue(Stored(statement_.stmt, column));
}

bool SqliteCursor::Step() {
  if (!statement_.pureRead) session_->handle().ForgetKept();
  int rc = sqlite3_step(statement_.stmt);
  RereadColumnsIfPreparedAnew(statement_);
  if (rc == SQLITE_ROW) {
    onRow_ = true;
    if (keep_ && ++rows_ == 1)
      TakeRow();
    else
      keep_ = false;
    return true;
  }
  if (rc != SQLITE_DONE) Fail();
  Stopped();
  return false;
}

Variant SqliteCursor::Value(int column) const {
  return FieldValue(statement_.columns->declaredTypes[column], Stored(statement_.stmt, column));
}

int64_t SqliteCursor::Run() {
  sqlite3* db = session_->handle().db();
  if (!statement_.pureRead) session_->handle().ForgetKept();
  int64_t before = sqlite3_total_changes64(db);
  int rc;
  while ((rc = sqlite3_step(statement_.stmt)) == SQLITE_ROW) {
  }
  if (rc != SQLITE_DONE) Fail();
  onRow_ = false;
  // sqlite3_changes keeps the count of the last insert, update or delete: statements that changed
  // nothing (a query, a create table) leave the total alone and answer 0.
  int64_t changed = sqlite3_total_changes64(db) == before ? 0 : sqlite3_changes64(db);
  keep_ = false;
  sqlite3_reset(statement_.stmt);
  session_->handle().StatementStopped();
  return changed;
}

int KeptRowCursor::ColumnType(int column) const {
  return onRow_ ? row_->types[column] : TypeOffRow(*row_->columns, column);
}

bool KeptRowCursor::Step() {
  onRow_ = !stepped_ && !row_->values.empty();
  stepped_ = true;
  return onRow_;
}

int64_t KeptRowCursor::Run() {
  stepped_ = true;
  onRow_ = false;
  return 0;
}

}  // namespace corvane::ado::detail
