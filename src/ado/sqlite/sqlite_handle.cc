#include "ado/sqlite/sqlite_handle.h"

#include "ado/field_types.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

namespace {

bool IsBlankOrSemicolon(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v' || c == ';';
}

// True when `text` holds no statement: only blanks, semicolons and comments.
bool HoldsNoStatement(sqlite3* db, const char* text, const char* end) {
  while (true) {
    while (text < end && IsBlankOrSemicolon(*text)) ++text;
    if (text == end) return true;
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    int rc = sqlite3_prepare_v2(db, text, static_cast<int>(end - text), &stmt, &tail);
    if (stmt) sqlite3_finalize(stmt);
    if (rc != SQLITE_OK || stmt) return false;
    if (tail == text) return true;
    text = tail;
  }
}

std::vector<std::string> ColumnNames(sqlite3_stmt* stmt) {
  std::vector<std::string> names(static_cast<size_t>(sqlite3_column_count(stmt)));
  for (size_t i = 0; i < names.size(); ++i)
    if (const char* name = sqlite3_column_name(stmt, static_cast<int>(i))) names[i] = name;
  return names;
}

int Preparations(sqlite3_stmt* stmt) { return sqlite3_stmt_status(stmt, SQLITE_STMTSTATUS_REPREPARE, 0); }

}  // namespace

void RereadColumnsIfPreparedAnew(SqliteStatement& statement) {
  const int prepared = Preparations(statement.stmt);
  if (statement.columns && prepared == statement.prepared) return;
  statement.columns = std::make_shared<const SqliteColumns>(statement.stmt);
  statement.prepared = prepared;
}

SqliteColumns::SqliteColumns(sqlite3_stmt* stmt) : ColumnSet(ColumnNames(stmt)) {
  declaredTypes.reserve(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    const char* declared = sqlite3_column_decltype(stmt, static_cast<int>(i));
    declaredTypes.push_back(declared ? TypeCodeOfDeclaredType(declared) : adEmpty);
  }
}

std::unique_ptr<SqliteHandle> SqliteHandle::Open(const std::string& path) {
  // SQLite's memory statistics take a global mutex on every allocation it makes, and nothing here
  // reads them. Turning them off works only before SQLite initializes itself (the first open).
  static const bool noMemoryStatistics = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK;
  (void)noMemoryStatistics;
  sqlite3* db = nullptr;
  // A handle is used by one thread at a time (the pool lends it to one session), so SQLite need not
  // lock each call: SQLITE_OPEN_NOMUTEX.
  int rc = sqlite3_open_v2(path.c_str(), &db,
                           SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc == SQLITE_OK) {
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    sqlite3_extended_result_codes(db, 0);
    // Also the first read of the file: a file that is not a database fails here, at Open.
    rc = sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  }
  if (rc != SQLITE_OK) {
    std::string message = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
    sqlite3_close_v2(db);
    throw Error::Database(message);
  }
  std::unique_ptr<SqliteHandle> handle(new SqliteHandle(db));
  sqlite3_set_authorizer(db, &SqliteHandle::Authorize, handle.get());
  // Without it no count is kept (DataVersion answers -1).
  sqlite3_prepare_v3(db, "PRAGMA data_version", -1, SQLITE_PREPARE_PERSISTENT, &handle->dataVersion_,
                     nullptr);
  return handle;
}

SqliteHandle::~SqliteHandle() {
  for (Entry& e : idle_) sqlite3_finalize(e.second.stmt);
  sqlite3_finalize(dataVersion_);
  sqlite3_close_v2(db_);
}

int SqliteHandle::Authorize(void* handle, int action, const char*, const char* name, const char* database,
                            const char*) {
  auto* self = static_cast<SqliteHandle*>(handle);
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_RECURSIVE: break;
    case SQLITE_READ:
      if (database && sqlite3_stricmp(database, "main") != 0 && sqlite3_stricmp(database, "temp") != 0)
        self->compiledPureRead_ = false;
      break;
    case SQLITE_ATTACH:
      // Another connection's commit to an attached database does not move main's data version (and
      // a read of a whole table does not always name its database): no count is kept from now on.
      self->attached_ = true;
      self->compiledPureRead_ = false;
      break;
    case SQLITE_FUNCTION:
      if (!name || sqlite3_stricmp(name, "count") != 0) self->compiledPureRead_ = false;
      break;
    default: self->compiledPureRead_ = false;
  }
  return SQLITE_OK;
}

sqlite3_stmt* SqliteHandle::Prepare(const std::string& sql, bool& pureRead) {
  sqlite3_stmt* stmt = nullptr;
  const char* tail = nullptr;
  const char* end = sql.data() + sql.size();
  compiledPureRead_ = true;
  int rc = sqlite3_prepare_v3(db_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &stmt,
                              &tail);
  if (rc != SQLITE_OK) throw Error::Database(sqlite3_errmsg(db_));
  if (!stmt) throw Error::Database("Command text was not set for the command object.");
  pureRead = compiledPureRead_;
  if (!HoldsNoStatement(db_, tail, end)) {
    sqlite3_finalize(stmt);
    throw Error::Database(
        "The command text holds more than one statement; only one statement can be "
        "run per call.");
  }
  return stmt;
}

SqliteStatement SqliteHandle::Acquire(const std::string& sql) {
  SqliteStatement s;
  auto found = index_.find(sql);
  if (found == index_.end()) {
    s.stmt = Prepare(sql, s.pureRead);
  } else {
    auto entry = found->second;
    s = std::move(entry->second);
    spareIndex_.push_back(index_.extract(found));
    spare_.splice(spare_.begin(), idle_, entry);
  }
  try {
    RereadColumnsIfPreparedAnew(s);
  } catch (...) {
    sqlite3_finalize(s.stmt);
    throw;
  }
  return s;
}

void SqliteHandle::Release(std::string sql, SqliteStatement statement) {
  sqlite3_reset(statement.stmt);
  StatementStopped();
  if (spare_.empty()) {
    idle_.emplace_front(std::move(sql), std::move(statement));
  } else {
    idle_.splice(idle_.begin(), spare_, spare_.begin());
    idle_.front() = Entry(std::move(sql), std::move(statement));
  }
  if (spareIndex_.empty()) {
    index_.emplace(idle_.front().first, idle_.begin());
  } else {
    Index::node_type node = std::move(spareIndex_.back());
    spareIndex_.pop_back();
    node.key() = idle_.front().first;
    node.mapped() = idle_.begin();
    index_.insert(std::move(node));
  }
  if (idle_.size() <= kCacheSize) return;
  auto oldest = std::prev(idle_.end());
  auto range = index_.equal_range(oldest->first);
  for (auto it = range.first; it != range.second; ++it) {
    if (it->second == oldest) {
      index_.erase(it);
      break;
    }
  }
  sqlite3_finalize(oldest->second.stmt);
  idle_.erase(oldest);
}

bool SqliteHandle::ResetForReuse() {
  // Statements come back to the cache reset; only one a caller left running needs it (the cache holds
  // dozens: resetting each would cost more than the rest of the return).
  for (sqlite3_stmt* s = sqlite3_next_stmt(db_, nullptr); s; s = sqlite3_next_stmt(db_, s))
    if (sqlite3_stmt_busy(s)) sqlite3_reset(s);
  rows_.clear();
  if (!sqlite3_get_autocommit(db_)) {
    ForgetKept();
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  return sqlite3_get_autocommit(db_) != 0;
}

bool SqliteHandle::MayKeepCount(const SqliteStatement& counter) const {
  return counter.pureRead && !attached_ && dataVersion_ && sqlite3_get_autocommit(db_) &&
         sqlite3_stmt_status(counter.stmt, SQLITE_STMTSTATUS_REPREPARE, 0) == 0;
}

int64_t SqliteHandle::DataVersion() {
  if (!dataVersion_) return -1;
  const int64_t version =
      sqlite3_step(dataVersion_) == SQLITE_ROW ? sqlite3_column_int64(dataVersion_, 0) : -1;
  sqlite3_reset(dataVersion_);
  StatementStopped();
  return version;
}

bool SqliteHandle::HoldsReadSnapshot() const {
  return !attached_ && sqlite3_get_autocommit(db_) && sqlite3_txn_state(db_, "main") == SQLITE_TXN_READ;
}

std::shared_ptr<const KeptRow> SqliteHandle::KeptRowOf(const std::string& sql) const {
  if (rows_.empty()) return nullptr;
  auto it = rows_.find(sql);
  return it == rows_.end() ? nullptr : it->second;
}

void SqliteHandle::KeepRow(const std::string& sql, std::shared_ptr<const KeptRow> row) {
  KeepBounded(rows_, sql, std::move(row));
}

std::optional<int64_t> SqliteHandle::KeptCount(const std::string& countSql, int64_t version) {
  if (version < 0 || version != countsVersion_) {
    counts_.clear();
    countsVersion_ = version;
    return std::nullopt;
  }
  auto it = counts_.find(countSql);
  if (it == counts_.end()) return std::nullopt;
  return it->second;
}

void SqliteHandle::KeepCount(const std::string& countSql, int64_t version, int64_t count) {
  if (version < 0 || version != countsVersion_) return;
  KeepBounded(counts_, countSql, count);
}

}  // namespace corvane::ado::detail
