// The drivers, in the order they are asked. An ODBC driver ("Driver=...;" and "DSN=..." strings) is
// added here when it exists.
#include <array>

#include "ado/connection_string.h"
#include "ado/driver.h"
#include "ado/sqlite/sqlite_driver.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

std::shared_ptr<Session> Connect(std::string_view connectionString) {
  static const std::array<const Driver*, 1> drivers{&SqliteDriver()};
  ConnectionString cs = ConnectionString::Parse(connectionString);
  for (const Driver* driver : drivers)
    if (driver->Accepts(cs)) return driver->Connect(cs);
  throw Error::ProviderNotFound();
}

}  // namespace corvane::ado::detail
