// The seam between the ADO objects and a database engine.
//
// A Driver turns a connection string it accepts into a Session: one open database handle, used by
// one Connection (and the recordsets opened on it) at a time, and given back to the driver's pool
// when the last of them lets go. A Session prepares one statement at a time into a Cursor that steps
// lazily. Each driver owns its SQL dialect: the components' text goes through Adapt before Prepare,
// and the recordset asks the session for its count text and for the rows of a page.
//
// The drivers: SQLite (embedded) and ODBC (database servers); see drivers.cc.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "corvane/variant.h"

namespace corvane::ado::detail {

class ConnectionString;

// Hashing and equality of names compared case-blind (ASCII letters, as LCase folds them), usable
// with string_view keys without building a lower-cased copy.
struct NoCaseHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const noexcept;
};
struct NoCaseEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept;
};

// The columns of a statement's result: the names as the database gives them, and the first column
// of each name, found in any case (fields are looked up by name in any case). A driver that keeps
// its prepared statements keeps their column sets with them, so opening a recordset again builds
// none.
struct ColumnSet {
  explicit ColumnSet(std::vector<std::string> columnNames);
  // The first column named `name` in any case; -1 when there is none.
  int Find(std::string_view name) const;
  static constexpr size_t kScanMost = 16;
  std::vector<std::string> names;
  std::unordered_map<std::string, int, NoCaseHash, NoCaseEqual> byName;
};

// One prepared statement. It keeps its session alive.
class Cursor {
 public:
  virtual ~Cursor() = default;
  // The result's columns (none for a statement that is not a query); never null.
  virtual std::shared_ptr<const ColumnSet> Columns() const = 0;
  int ColumnCount() const { return static_cast<int>(Columns()->names.size()); }
  // The ADO type code of the column: the declared type's, or when nothing is declared, that of the
  // current row's value (adVarWChar when there is no row).
  virtual int ColumnType(int column) const = 0;
  // Moves to the next row (the first call to the first row); false at the end. A database error
  // raises Error::Database.
  virtual bool Step() = 0;
  // A value of the current row; only after Step answered true.
  virtual Variant Value(int column) const = 0;
  // Runs the statement to its end and answers the number of rows it changed (0 for statements that
  // change no rows, queries included).
  virtual int64_t Run() = 0;
};

// Runs a statement that is not a query (Cursor::Run) and then moves ado::ChangeCount, also when it
// fails partway: it may have changed something before it failed.
int64_t RunChanging(Cursor& statement);

// The number a count query (Session::CountQuery) answers.
int64_t CountRows(Cursor& counter);

class Session {
 public:
  virtual ~Session() = default;
  // The components' SQL in this database's dialect.
  virtual std::string Adapt(std::string_view sql) const = 0;
  // A query that counts the rows of `adapted`.
  virtual std::string CountQuery(std::string_view adapted) const = 0;
  // Prepares `adapted` (one statement). Raises Error::Database with the database's message when it is
  // rejected, and when more than one statement is given; nothing runs then.
  virtual std::unique_ptr<Cursor> Prepare(const std::string& adapted) = 0;
  // The rows of the query `adapted` from the 0-based row `offset` on, the rows before it skipped by
  // the database rather than read.
  virtual std::unique_ptr<Cursor> PrepareFrom(const std::string& adapted, int64_t offset) = 0;
  // The number of rows of the query `adapted`: its count query, run.
  virtual int64_t Count(const std::string& adapted);
};

class Driver {
 public:
  virtual ~Driver() = default;
  virtual bool Accepts(const ConnectionString& cs) const = 0;
  // A session from the pool of this connection's database. Raises when the database cannot be opened.
  virtual std::shared_ptr<Session> Connect(const ConnectionString& cs) const = 0;
};

// A session for `connectionString` from the first driver that accepts it. Raises 3706 when no driver
// does.
std::shared_ptr<Session> Connect(std::string_view connectionString);

}  // namespace corvane::ado::detail
