// One open ODBC connection: the handle, the product it reached (which picks the dialect), and what
// the pool needs to hand it out again safely.
#pragma once

#include <memory>
#include <string>

#include "ado/odbc/odbc_handle.h"
#include "ado/sql_dialect.h"

namespace corvane::ado::detail {

class OdbcConnection {
 public:
  static constexpr int kLoginTimeoutSeconds = 10;

  // Connects with `text` (no prompt), asks the product's name and prepares the session for the
  // components' SQL (MariaDB: no backslash escapes in strings, || joins texts). Raises
  // Error::Database with the driver's SQLSTATE and message, the password masked.
  static std::unique_ptr<OdbcConnection> Open(const std::string& text, const std::string& secret);
  ~OdbcConnection();

  SQLHDBC dbc() const { return dbc_.get(); }
  Dialect dialect() const { return dialect_; }
  const std::string& secret() const { return secret_; }

  // Runs `sql` and discards any rows. Raises Error::Database.
  void Run(const std::string& sql);
  // Makes the connection fit for its next user: no transaction open. False when the connection does
  // not answer; it should be closed then.
  bool ResetForReuse();
  // A round trip to the server: false when the connection is gone (the server restarted, an
  // administrator ended it).
  bool Alive();

 private:
  explicit OdbcConnection(std::string secret)
      : dbc_(SQL_HANDLE_DBC, OdbcEnvironment()), secret_(std::move(secret)) {}

  OdbcHandle dbc_;
  std::string secret_;
  Dialect dialect_ = Dialect::SqlServer;
  bool connected_ = false;
};

}  // namespace corvane::ado::detail
