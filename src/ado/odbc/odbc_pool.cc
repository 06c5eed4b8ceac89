#include "ado/odbc/odbc_pool.h"

#include <unordered_map>

#include "ado/connection_string.h"

namespace corvane::ado::detail {

std::shared_ptr<OdbcPool> OdbcPool::For(const OdbcTarget& target) {
  static std::mutex mu;
  static std::unordered_map<std::string, std::shared_ptr<OdbcPool>> pools;
  std::lock_guard lock(mu);
  std::shared_ptr<OdbcPool>& pool = pools[target.text];
  if (!pool) pool = std::make_shared<OdbcPool>(target);
  return pool;
}

std::unique_ptr<OdbcConnection> OdbcPool::Take() {
  while (true) {
    std::unique_ptr<OdbcConnection> connection;
    {
      std::lock_guard lock(mu_);
      if (idle_.empty()) break;
      connection = std::move(idle_.back());
      idle_.pop_back();
    }
    if (connection->Alive()) return connection;
    // Gone with the server: closed here, and the next one tried.
  }
  return OdbcConnection::Open(target_.text, target_.secret);
}

void OdbcPool::Give(std::unique_ptr<OdbcConnection> connection, bool broken) {
  if (!connection || broken || !connection->ResetForReuse()) return;
  {
    std::lock_guard lock(mu_);
    if (idle_.size() < kMaxIdle) {
      idle_.push_back(std::move(connection));
      return;
    }
  }
  connection.reset();  // closed outside the lock
}

size_t OdbcPool::IdleCount() const {
  std::lock_guard lock(mu_);
  return idle_.size();
}

void OdbcPool::CloseIdle() {
  std::vector<std::unique_ptr<OdbcConnection>> closing;
  {
    std::lock_guard lock(mu_);
    closing.swap(idle_);
  }
}

void CloseIdleOdbcConnections(std::string_view connectionString) {
  if (std::optional<OdbcTarget> target = OdbcTargetOf(ConnectionString::Parse(connectionString)))
    OdbcPool::For(*target)->CloseIdle();
}

}  // namespace corvane::ado::detail
