// The state of an open Recordset.
//
// The recordset never holds its rows: `cursor` sits on the current row of a statement, and moving on
// is one step of it. Positioning on a page prepares the statement again with an offset, so the rows
// before the page are skipped by the database, not read. `position` is the 0-based number of the
// current row in the whole result; it gives AbsolutePage. The count behind RecordCount and PageCount
// is asked of the database once, when first needed.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ado/driver.h"

namespace corvane::ado::detail {

class RecordsetImpl {
 public:
  // Prepares `source` in the session's dialect and moves to its first row. A statement without
  // columns (an insert given to Open) is run instead, and the recordset stays closed, as ADO leaves
  // it; the answer is then the number of rows it changed, else -1.
  int64_t Open(std::shared_ptr<Session> session, std::string_view source);
  // Runs the statement again from row `offset` on and stands on its first row.
  void Restart(int64_t offset);
  void Step();
  void Reset();  // back to closed

  void RequireOpen() const;                   // 3704 when closed
  void RequireRecord() const;                 // 3021 at EOF
  int ColumnOf(std::string_view name) const;  // 3265 when unknown
  int ColumnOf(int index) const;              // 3265 when out of range
  int64_t Count();

  std::shared_ptr<Session> session;  // null while closed
  // The statement as the caller gave it: Source(). `source` holds it only when the dialect changed
  // it (most statements pass unchanged, and a list opens one per row); an open recordset's statement
  // is never empty.
  const std::string& Source() const { return source.empty() ? adapted : source; }
  std::string source;
  std::string adapted;
  std::unique_ptr<Cursor> cursor;
  std::shared_ptr<const ColumnSet> columns;  // null while closed
  bool eof = true;
  int64_t position = 0;
  int32_t pageSize = 10;
  std::optional<int64_t> count;
};

}  // namespace corvane::ado::detail
