#include "ado/sqlite/sqlite_driver.h"

#include "ado/connection_string.h"
#include "ado/sql_dialect.h"
#include "ado/sqlite/sqlite_cursor.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

namespace {

bool EndsWithNoCase(std::string_view s, std::string_view suffix) {
  if (s.size() < suffix.size()) return false;
  for (size_t i = 0; i < suffix.size(); ++i) {
    char c = s[s.size() - suffix.size() + i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != suffix[i]) return false;
  }
  return true;
}

bool IsSqliteProvider(const ConnectionString& cs) {
  std::optional<std::string> provider = cs.Get("provider");
  if (!provider) return false;
  std::string p = *provider;
  for (char& c : p)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return p == "sqlite" || p == "sqlite3";
}

bool IsSqlitePath(std::string_view path) {
  return EndsWithNoCase(path, ".db") || EndsWithNoCase(path, ".sqlite") || EndsWithNoCase(path, ".sqlite3");
}

class Sqlite final : public Driver {
 public:
  bool Accepts(const ConnectionString& cs) const override {
    return IsSqliteProvider(cs) || IsSqlitePath(cs.BarePath());
  }

  std::shared_ptr<Session> Connect(const ConnectionString& cs) const override {
    std::string path = cs.BarePath();
    if (path.empty()) {
      std::optional<std::string> source = cs.Get("data source");
      if (!source) source = cs.Get("datasource");
      if (!source || source->empty())
        throw Error::Database("The connection string names no Data Source for the SQLite provider.");
      path = *source;
    }
    std::shared_ptr<SqlitePool> pool = SqlitePool::For(path);
    std::unique_ptr<SqliteHandle> handle = pool->Take();
    return std::make_shared<SqliteSession>(std::move(pool), std::move(handle));
  }
};

}  // namespace

SqliteSession::~SqliteSession() { pool_->Give(std::move(handle_)); }

std::string SqliteSession::Adapt(std::string_view sql) const { return AdaptForSqlite(sql); }

std::string SqliteSession::CountQuery(std::string_view adapted) const {
  return detail::CountQuery(Dialect::SQLite, adapted);
}

std::unique_ptr<Cursor> SqliteSession::PrepareFrom(const std::string& adapted, int64_t offset) {
  return Prepare(offset == 0 ? adapted : OffsetQuery(Dialect::SQLite, adapted, offset));
}

std::unique_ptr<Cursor> SqliteSession::Prepare(const std::string& adapted) {
  if (!handle_->HoldsReadSnapshot())
    return std::make_unique<SqliteCursor>(shared_from_this(), adapted, handle_->Acquire(adapted));
  if (auto kept = handle_->KeptRowOf(adapted)) return std::make_unique<KeptRowCursor>(std::move(kept));
  auto cursor = std::make_unique<SqliteCursor>(shared_from_this(), adapted, handle_->Acquire(adapted));
  cursor->KeepOneRow();
  return cursor;
}

int64_t SqliteSession::Count(const std::string& adapted) {
  const std::string sql = CountQuery(adapted);
  SqliteCursor counter(shared_from_this(), sql, handle_->Acquire(sql));
  if (!handle_->MayKeepCount(counter.Statement())) return CountRows(counter);
  // Read before the count runs: a commit in between moves the version this connection sees, and
  // what was kept under the older one is not used again.
  const int64_t version = handle_->DataVersion();
  if (std::optional<int64_t> kept = handle_->KeptCount(sql, version)) return *kept;
  const int64_t count = CountRows(counter);
  handle_->KeepCount(sql, version, count);
  return count;
}

const Driver& SqliteDriver() {
  static const Sqlite driver;
  return driver;
}

}  // namespace corvane::ado::detail
