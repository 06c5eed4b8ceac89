#include "ado/sqlite/sqlite_pool.h"

#include <filesystem>
#include <mutex>
#include <unordered_map>

namespace corvane::ado::detail {

std::shared_ptr<SqlitePool> SqlitePool::For(const std::string& path) {
  static std::mutex mu;
  static std::unordered_map<std::string, std::shared_ptr<SqlitePool>> pools;
  // An absolute path names the same file whatever the working folder: its pool is found by the
  // path as given, without normalizing it again on every open.
  static std::unordered_map<std::string, std::shared_ptr<SqlitePool>> byAbsolutePath;
  const bool absolutePath = !path.empty() && path[0] == '/';
  if (absolutePath) {
    std::lock_guard lock(mu);
    if (auto it = byAbsolutePath.find(path); it != byAbsolutePath.end()) return it->second;
  }
  std::error_code ec;
  std::filesystem::path absolute = std::filesystem::absolute(path, ec);
  std::string key = ec ? path : absolute.lexically_normal().string();
  std::lock_guard lock(mu);
  std::shared_ptr<SqlitePool>& pool = pools[key];
  if (!pool) pool = std::make_shared<SqlitePool>(key);
  if (absolutePath) byAbsolutePath.try_emplace(path, pool);
  return pool;
}

std::unique_ptr<SqliteHandle> SqlitePool::Take() {
  // A handle keeps its file open even after the file was moved or deleted: what it wrote then
  // would go to a file nobody opens again. Such a handle is closed, and the path opened anew.
  std::unique_ptr<SqliteHandle> handle = idle_.Take([](SqliteHandle& h) {
    int moved = 0;
    return sqlite3_file_control(h.db(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && !moved;
  });
  return handle ? std::move(handle) : SqliteHandle::Open(path_);
}

void SqlitePool::Give(std::unique_ptr<SqliteHandle> handle) {
  if (handle && handle->ResetForReuse()) idle_.Keep(std::move(handle));
}

size_t SqlitePool::IdleCount() const { return idle_.Count(); }

}  // namespace corvane::ado::detail
