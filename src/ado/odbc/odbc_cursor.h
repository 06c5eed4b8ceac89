// A statement of an ODBC session. It runs when made; a select is read in windows: the statement
// with LIMIT/OFFSET for a batch of rows, and when a full batch has been read, the next batch (each
// one larger, up to kMaxWindow rows). A page thus costs the rows of the page and not those before
// it, and a recordset left open on a large table holds one batch, whatever the driver buffers.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ado/driver.h"
#include "ado/odbc/odbc_handle.h"

namespace corvane::ado::detail {

class OdbcSession;

class OdbcCursor final : public Cursor {
 public:
  static constexpr int64_t kFirstWindow = 64;
  static constexpr int64_t kMaxWindow = 16384;

  // Runs `body` (one statement, adapted) on the session; with `windowed`, `body` is a select whose
  // rows are read from row `offset` on, in windows. Raises Error::Database when the server refuses.
  OdbcCursor(std::shared_ptr<OdbcSession> session, std::string body, int64_t offset, bool windowed);
  ~OdbcCursor() override;

  std::shared_ptr<const ColumnSet> Columns() const override { return columns_; }
  int ColumnType(int column) const override { return types_[column]; }
  bool Step() override;
  Variant Value(int column) const override { return row_[column]; }
  int64_t Run() override;

 private:
  void Execute();
  void Describe();
  [[noreturn]] void Fail(const OdbcHandle& handle, std::string_view what);

  std::shared_ptr<OdbcSession> session_;
  std::string body_;
  bool windowed_;
  int64_t windowStart_;
  int64_t windowRows_ = kFirstWindow;
  int64_t rowsInWindow_ = 0;
  std::unique_ptr<OdbcHandle> stmt_;  // null once the rows are read
  std::shared_ptr<const ColumnSet> columns_;
  std::vector<SQLSMALLINT> sqlTypes_;
  std::vector<int> types_;
  std::vector<Variant> row_;
};

// The spelling of a column name as the statement writes it: PostgreSQL reports unquoted names
// folded to lower case ("personname" for personName), so a word of `sql` equal to `name` but for
// case gives the name back its case. `name` itself when the statement has no such word.
std::string NameAsWritten(std::string_view sql, const std::string& name);

}  // namespace corvane::ado::detail
