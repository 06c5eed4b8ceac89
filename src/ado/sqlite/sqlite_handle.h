// One SQLite database handle with its cache of prepared statements.
//
// The cache is keyed by the adapted SQL text. A statement is lent out by Acquire and comes back by
// Release; while it is out, an Acquire of the same text prepares another one, so two recordsets may
// run the same query side by side. Idle statements beyond kCacheSize are finalized, least recently
// used first. A handle is used by one thread at a time (the pool hands it to one session).
//
// A statement is kept with its result's columns, read when it was prepared and read again when
// SQLite has prepared it anew since (after a change of the schema).
//
// The handle also keeps the counts of the queries it counted (a list page counts its query on every
// page), for as long as the database is surely as it was then: no other connection has committed
// since (PRAGMA data_version tells) and this one has run nothing but pure reads (a statement that
// changes anything, or opens or ends a transaction, forgets them all). Only a count of a pure read,
// one that reads tables and calls no function but count() (a view's functions included), is kept,
// none while a transaction is open, and none on a handle that ever attached another database: such
// a count is what running it again would answer.
#pragma once

#include <sqlite3.h>

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ado/driver.h"
#include "corvane/variant.h"

namespace corvane::ado::detail {

// The columns of a SQLite statement: names, and each one's ADO type code by its declared type
// (adEmpty where nothing is declared).
struct SqliteColumns : ColumnSet {
  explicit SqliteColumns(sqlite3_stmt* stmt);
  std::vector<int> declaredTypes;
};

// A prepared statement and its columns.
struct SqliteStatement {
  sqlite3_stmt* stmt = nullptr;
  std::shared_ptr<const SqliteColumns> columns;
  int prepared = 0;       // SQLite's count of new preparations when they were read
  bool pureRead = false;  // reads tables and calls no function but count(), as first prepared
};

// The one row of a query (or its having none), read within a read transaction and kept while that
// transaction lasts: the values and the column types as its cursor gave them.
struct KeptRow {
  std::shared_ptr<const SqliteColumns> columns;
  std::vector<Variant> values;  // none when the query had no row
  std::vector<int> types;
};

// Reads the statement's columns again when SQLite has prepared it anew since they were read (it does
// so in a step, after the schema changed).
void RereadColumnsIfPreparedAnew(SqliteStatement& statement);

class SqliteHandle {
 public:
  static constexpr size_t kCacheSize = 64;
  static constexpr int kBusyTimeoutMs = 5000;

  // Opens (creating when absent) the database file in WAL mode with the busy timeout. Raises
  // Error::Database when the file cannot be opened or is not a database.
  static std::unique_ptr<SqliteHandle> Open(const std::string& path);
  ~SqliteHandle();
  SqliteHandle(const SqliteHandle&) = delete;
  SqliteHandle& operator=(const SqliteHandle&) = delete;

  sqlite3* db() const { return db_; }

  // A prepared statement of `sql`. Raises Error::Database with SQLite's message when the statement is
  // rejected, when the text holds no statement, or when anything but blanks, semicolons and comments
  // follows the first statement.
  SqliteStatement Acquire(const std::string& sql);
  // Takes back a statement from Acquire: reset and kept, with its text, for the next Acquire of the
  // same text.
  void Release(std::string sql, SqliteStatement statement);

  // Makes the handle fit for its next user: every statement reset, no transaction open. False when
  // that could not be done; such a handle should be closed.
  bool ResetForReuse();

  size_t CachedStatements() const { return idle_.size(); }

  // True when the count of `counter` (acquired here) may be kept: a pure read, not prepared anew
  // since, and no transaction open.
  bool MayKeepCount(const SqliteStatement& counter) const;
  // The database's version as this connection sees it (PRAGMA data_version); -1 when it cannot be
  // read.
  int64_t DataVersion();
  // The count kept for `countSql` at `version`; none when none is, or the version has moved (all
  // kept counts are then forgotten).
  std::optional<int64_t> KeptCount(const std::string& countSql, int64_t version);
  void KeepCount(const std::string& countSql, int64_t version, int64_t count);
  // Called before this connection runs anything but a pure read: the counts and rows kept go.
  void ForgetKept() {
    if (!counts_.empty()) counts_.clear();
    if (!rows_.empty()) rows_.clear();
  }

  // Rows of one-row queries are kept only within a read transaction that another statement of this
  // connection holds open (a list being read while each of its rows looks up a name): no other
  // connection's commit shows in it, and anything this one runs besides pure reads forgets them.
  // True when such a transaction is open now.
  bool HoldsReadSnapshot() const;
  std::shared_ptr<const KeptRow> KeptRowOf(const std::string& sql) const;
  void KeepRow(const std::string& sql, std::shared_ptr<const KeptRow> row);
  // Called after any statement of this connection stopped (reset, done or failed): once no read
  // transaction is open, the rows kept in the last one are forgotten.
  void StatementStopped() {
    if (!rows_.empty() && sqlite3_txn_state(db_, "main") == SQLITE_TXN_NONE) rows_.clear();
  }

 private:
  static constexpr size_t kMostKept = 256;  // counts, or rows: then they are all forgotten

  explicit SqliteHandle(sqlite3* db) : db_(db) {}
  template <typename Map, typename Value>
  static void KeepBounded(Map& kept, const std::string& sql, Value value) {
    if (kept.size() >= kMostKept) kept.clear();
    kept.insert_or_assign(sql, std::move(value));
  }
  sqlite3_stmt* Prepare(const std::string& sql, bool& pureRead);
  // SQLite's authorizer, asked while a statement compiles: notes whether it does more than read.
  static int Authorize(void* handle, int action, const char* a, const char* b, const char*, const char*);

  using Entry = std::pair<std::string, SqliteStatement>;
  sqlite3* db_;
  std::list<Entry> idle_;  // most recently used first
  // By the text held in the entry itself (list entries stay where they are).
  using Index = std::unordered_multimap<std::string_view, std::list<Entry>::iterator>;
  Index index_;
  // The nodes of statements lent out, kept for their return: a statement goes out and comes back
  // many times a page, and moving nodes costs no allocation.
  std::list<Entry> spare_;
  std::vector<Index::node_type> spareIndex_;
  bool compiledPureRead_ = true;  // set by Authorize
  bool attached_ = false;         // an ATTACH was compiled on this handle
  sqlite3_stmt* dataVersion_ = nullptr;
  int64_t countsVersion_ = -1;
  std::unordered_map<std::string, int64_t> counts_;
  std::unordered_map<std::string, std::shared_ptr<const KeptRow>> rows_;
};

}  // namespace corvane::ado::detail
