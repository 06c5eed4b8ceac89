// The drivers, in the order they are asked: SQLite ("Provider=SQLite;..." and bare .db paths), then
// ODBC ("Driver=...;", "DSN=...", and SQL Server's ADO providers through FreeTDS).
#include <array>

#include "ado/connection_string.h"
#include "ado/driver.h"
#include "ado/odbc/odbc_session.h"
#include "ado/sqlite/sqlite_driver.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

int64_t CountRows(Cursor& counter) {
  return counter.Step() ? static_cast<int64_t>(counter.Value(0).ToDouble()) : 0;
}

int64_t Session::Count(const std::string& adapted) { return CountRows(*Prepare(CountQuery(adapted))); }

std::shared_ptr<Session> Connect(std::string_view connectionString) {
  static const std::array<const Driver*, 2> drivers{&SqliteDriver(), &OdbcDriver()};
  ConnectionString cs = ConnectionString::Parse(connectionString);
  for (const Driver* driver : drivers)
    if (driver->Accepts(cs)) return driver->Connect(cs);
  throw Error::ProviderNotFound();
}

}  // namespace corvane::ado::detail
