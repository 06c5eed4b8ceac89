#include "ado/sqlite/sqlite_cursor.h"

#include "ado/field_types.h"
#include "ado/sqlite/sqlite_driver.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

namespace {

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

SqliteCursor::~SqliteCursor() { session_->handle().Release(std::move(sql_), std::move(statement_)); }

void SqliteCursor::Fail() {
  onRow_ = false;
  std::string message = sqlite3_errmsg(session_->handle().db());
  sqlite3_reset(statement_.stmt);
  throw Error::Database(message);
}

int SqliteCursor::ColumnType(int column) const {
  const int declared = statement_.columns->declaredTypes[column];
  if (declared != adEmpty) return declared;
  if (!onRow_) return adVarWChar;
  return TypeCodeOfStoredValue(Stored(statement_.stmt, column));
}

bool SqliteCursor::Step() {
  if (!statement_.pureRead) session_->handle().ForgetCounts();
  int rc = sqlite3_step(statement_.stmt);
  RereadColumnsIfPreparedAnew(statement_);
  if (rc == SQLITE_ROW) return onRow_ = true;
  if (rc != SQLITE_DONE) Fail();
  onRow_ = false;
  return false;
}

Variant SqliteCursor::Value(int column) const {
  return FieldValue(statement_.columns->declaredTypes[column], Stored(statement_.stmt, column));
}

int64_t SqliteCursor::Run() {
  sqlite3* db = session_->handle().db();
  if (!statement_.pureRead) session_->handle().ForgetCounts();
  int64_t before = sqlite3_total_changes64(db);
  int rc;
  while ((rc = sqlite3_step(statement_.stmt)) == SQLITE_ROW) {
  }
  if (rc != SQLITE_DONE) Fail();
  onRow_ = false;
  // sqlite3_changes keeps the count of the last insert, update or delete: statements that changed
  // nothing (a query, a create table) leave the total alone and answer 0.
  int64_t changed = sqlite3_total_changes64(db) == before ? 0 : sqlite3_changes64(db);
  sqlite3_reset(statement_.stmt);
  return changed;
}

}  // namespace corvane::ado::detail
