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
  // An idle connection whose server went away is closed here, and the next one tried.
  std::unique_ptr<OdbcConnection> connection = idle_.Take([](OdbcConnection& c) { return c.Alive(); });
  return connection ? std::move(connection) : OdbcConnection::Open(target_.text, target_.secret);
}

void OdbcPool::Give(std::unique_ptr<OdbcConnection> connection, bool broken) {
  if (connection && !broken && connection->ResetForReuse()) idle_.Keep(std::move(connection));
}

size_t OdbcPool::IdleCount() const { return idle_.Count(); }

void OdbcPool::CloseIdle() { idle_.CloseAll(); }

void CloseIdleOdbcConnections(std::string_view connectionString) {
  if (std::optional<OdbcTarget> target = OdbcTargetOf(ConnectionString::Parse(connectionString)))
    OdbcPool::For(*target)->CloseIdle();
}

}  // namespace corvane::ado::detail
