#include "ado/sqlite/sqlite_test_hook.h"

#include "ado/access.h"
#include "ado/sqlite/sqlite_driver.h"

namespace corvane::ado::detail {

sqlite3* SqliteHandleOf(const Connection& connection) {
  if (!connection.IsOpen()) return nullptr;
  auto* session = dynamic_cast<SqliteSession*>(Access::Of(connection).session.get());
  return session ? session->handle().db() : nullptr;
}

}  // namespace corvane::ado::detail
