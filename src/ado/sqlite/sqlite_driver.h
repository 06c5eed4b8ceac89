// The SQLite driver: "Provider=SQLite;Data Source=<file>" (the provider name in any case) and a bare
// path ending in .db, .sqlite or .sqlite3. A session holds one pooled handle and gives it back to the
// pool when the last connection or recordset using it lets go.
#pragma once

#include <memory>

#include "ado/driver.h"
#include "ado/sqlite/sqlite_handle.h"
#include "ado/sqlite/sqlite_pool.h"

namespace corvane::ado::detail {

class SqliteSession : public Session, public std::enable_shared_from_this<SqliteSession> {
 public:
  SqliteSession(std::shared_ptr<SqlitePool> pool, std::unique_ptr<SqliteHandle> handle)
      : pool_(std::move(pool)), handle_(std::move(handle)) {}
  ~SqliteSession() override;

  std::string Adapt(std::string_view sql) const override;
  std::string CountQuery(std::string_view adapted) const override;
  std::unique_ptr<Cursor> Prepare(const std::string& adapted) override;
  std::unique_ptr<Cursor> PrepareFrom(const std::string& adapted, int64_t offset) override;
  // Kept by the handle while the database is as it was (see sqlite_handle.h).
  int64_t Count(const std::string& adapted) override;

  SqliteHandle& handle() { return *handle_; }

 private:
  std::shared_ptr<SqlitePool> pool_;
  std::unique_ptr<SqliteHandle> handle_;
};

const Driver& SqliteDriver();

}  // namespace corvane::ado::detail
