// Pools of ODBC connections, one per connection string, shared by every thread of the process.
//
// A connection comes back through Give, which rolls back whatever its user left open; one that
// cannot be reset, or that failed on the way (the server went away), is closed instead. Take checks
// an idle connection with a round trip before handing it out and drops it when the server no longer
// answers, so a server restarted between two requests costs nothing but a new connection. At most
// kMaxIdle idle connections are kept per string.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ado/idle_handles.h"
#include "ado/odbc/odbc_connection.h"
#include "ado/odbc/odbc_connection_text.h"

namespace corvane::ado::detail {

class OdbcPool {
 public:
  static constexpr size_t kMaxIdle = 16;

  static std::shared_ptr<OdbcPool> For(const OdbcTarget& target);

  explicit OdbcPool(OdbcTarget target) : target_(std::move(target)), idle_(kMaxIdle) {}

  std::unique_ptr<OdbcConnection> Take();
  void Give(std::unique_ptr<OdbcConnection> connection, bool broken);
  size_t IdleCount() const;
  void CloseIdle();

 private:
  const OdbcTarget target_;
  IdleHandles<OdbcConnection> idle_;
};

// For tests and hosts: closes the idle connections pooled for `connectionString` (before its
// database is dropped, say). Does nothing for a string that is not one for ODBC.
void CloseIdleOdbcConnections(std::string_view connectionString);

}  // namespace corvane::ado::detail
