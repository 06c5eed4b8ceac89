// Pools of SQLite handles, one pool per database file, shared by every thread of the process.
//
// A page that opens and closes its connection gets a warm handle back (its statement cache filled)
// instead of opening the file again. A handle comes back through Give, which resets it (statements
// reset, an open transaction rolled back) before another user can take it; a handle that cannot be
// reset is closed instead. At most kMaxIdle idle handles are kept per file.
#pragma once

#include <memory>
#include <string>

#include "ado/idle_handles.h"
#include "ado/sqlite/sqlite_handle.h"

namespace corvane::ado::detail {

class SqlitePool {
 public:
  static constexpr size_t kMaxIdle = 16;

  // The pool of the database at `path` (made absolute, so spellings of one file share a pool).
  static std::shared_ptr<SqlitePool> For(const std::string& path);

  explicit SqlitePool(std::string path) : path_(std::move(path)), idle_(kMaxIdle) {}

  // An idle handle, the most recently returned first, or a newly opened one (which may raise).
  std::unique_ptr<SqliteHandle> Take();
  void Give(std::unique_ptr<SqliteHandle> handle);
  size_t IdleCount() const;

 private:
  const std::string path_;
  IdleHandles<SqliteHandle> idle_;
};

}  // namespace corvane::ado::detail
