// The ODBC connection string a connection string stands for.
//
//   "Driver={PostgreSQL Unicode};Server=...;Pwd={a;b}", "DSN=office;Uid=..."   given to the driver
//       manager as written (keys lower-cased, values braced where they need it); psqlODBC also gets
//       BoolsAsChar=0 (booleans as bits), CommLog=0 and Debug=0 unless the string sets them.
//   "Provider=SQLOLEDB;Data Source=host[,port];Initial Catalog=db;User ID=u;Password=p"  (also the
//       SQLNCLI and MSOLEDBSQL providers): SQL Server through FreeTDS, the dialect passed through.
#pragma once

#include <optional>
#include <string>

namespace corvane::ado::detail {

class ConnectionString;

struct OdbcTarget {
  std::string text;    // for SQLDriverConnect
  std::string secret;  // the password, masked in every message
};

// Nullopt when the string is not one for ODBC.
std::optional<OdbcTarget> OdbcTargetOf(const ConnectionString& cs);

// `value` as an ODBC attribute value: in braces when it holds ";", braces or outer blanks.
std::string OdbcValue(const std::string& value);

}  // namespace corvane::ado::detail
