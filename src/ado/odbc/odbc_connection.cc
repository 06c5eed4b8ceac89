#include "ado/odbc/odbc_connection.h"

#include "corvane/error.h"

namespace corvane::ado::detail {

std::unique_ptr<OdbcConnection> OdbcConnection::Open(const std::string& text, const std::string& secret) {
  std::unique_ptr<OdbcConnection> c(new OdbcConnection(secret));
  SQLSetConnectAttrW(c->dbc(), SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(kLoginTimeoutSeconds), 0);
  std::u16string wide = Wide(text);
  SQLSMALLINT outLength = 0;
  SQLRETURN rc = SQLDriverConnectW(c->dbc(), nullptr, WidePtr(wide), static_cast<SQLSMALLINT>(wide.size()),
                                   nullptr, 0, &outLength, SQL_DRIVER_NOPROMPT);
  Check(rc, c->dbc_, "The database server could not be reached.", secret);
  c->connected_ = true;
  SQLWCHAR name[128] = {};
  SQLSMALLINT length = 0;
  if (SQL_SUCCEEDED(SQLGetInfoW(c->dbc(), SQL_DBMS_NAME, name, sizeof(name), &length)))
    c->dialect_ = DialectOfProduct(Narrow(name, static_cast<size_t>(length) / sizeof(SQLWCHAR)));
  if (c->dialect_ == Dialect::MariaDB)
    c->Run(
        "set session sql_mode = concat_ws(',', nullif(@@sql_mode, ''), 'NO_BACKSLASH_ESCAPES', "
        "'PIPES_AS_CONCAT')");
  return c;
}

OdbcConnection::~OdbcConnection() {
  if (connected_) SQLDisconnect(dbc());
}

void OdbcConnection::Run(const std::string& sql) {
  OdbcHandle stmt(SQL_HANDLE_STMT, dbc());
  std::u16string wide = Wide(sql);
  Check(SQLExecDirectW(stmt.get(), WidePtr(wide), static_cast<SQLINTEGER>(wide.size())), stmt,
        "The statement failed.", secret_);
  while (SQL_SUCCEEDED(SQLMoreResults(stmt.get()))) {
  }
}

bool OdbcConnection::ResetForReuse() {
  try {
    switch (dialect_) {
      case Dialect::SqlServer: Run("if @@trancount > 0 rollback"); break;
      default: Run("rollback"); break;
    }
    return true;
  } catch (const Error&) {
    return false;
  }
}

bool OdbcConnection::Alive() {
  try {
    Run("select 1");
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace corvane::ado::detail
