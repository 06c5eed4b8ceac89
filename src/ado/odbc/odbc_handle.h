// ODBC handles as owned objects, and the diagnostics of a failed call as a corvane::Error.
//
// The wide (W) calls are used throughout: unixODBC's SQLWCHAR is a UTF-16 code unit, so text crosses
// the boundary as UTF-16 whatever the driver's own encoding, and the Variant's UTF-8 is converted at
// the edge (Wide, Narrow).
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>
#include <string_view>

namespace corvane::ado::detail {

class OdbcHandle {
 public:
  // A new handle of `type` under `parent` (the process's environment for a connection). Raises
  // Error::Database when the driver manager refuses.
  OdbcHandle(SQLSMALLINT type, SQLHANDLE parent);
  ~OdbcHandle();
  OdbcHandle(const OdbcHandle&) = delete;
  OdbcHandle& operator=(const OdbcHandle&) = delete;

  SQLHANDLE get() const { return handle_; }
  SQLSMALLINT type() const { return type_; }

 private:
  SQLSMALLINT type_;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// The process's ODBC environment (ODBC 3 behaviour), made on first use.
SQLHENV OdbcEnvironment();

// The first diagnostic record of `handle` as "SQLSTATE <state>: <message>", with every occurrence of
// `secret` (the password) masked; `fallback` when the handle has none.
std::string OdbcDiagnostics(SQLSMALLINT type, SQLHANDLE handle, std::string_view fallback,
                            std::string_view secret = {});
// The SQLSTATE of the first diagnostic record; empty when there is none.
std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle);

// Raises Error::Database with the handle's diagnostics unless `rc` is a success.
void Check(SQLRETURN rc, const OdbcHandle& handle, std::string_view what, std::string_view secret = {});

// Text across the boundary: UTF-8 to and from SQLWCHAR (UTF-16).
std::u16string Wide(std::string_view utf8);
std::string Narrow(const SQLWCHAR* text, size_t units);
inline SQLWCHAR* WidePtr(std::u16string& s) { return reinterpret_cast<SQLWCHAR*>(s.data()); }

}  // namespace corvane::ado::detail
