#include "ado/odbc/odbc_session.h"

#include "ado/connection_string.h"
#include "ado/odbc/odbc_cursor.h"
#include "ado/odbc/odbc_pool.h"
#include "ado/sql_dialect.h"
#include "ado/sql_tokens.h"
#include "corvane/error.h"

namespace corvane::ado::detail {

namespace {

// "Driver=...;" and "DSN=..." strings, and SQL Server's ADO providers (through FreeTDS).
class Odbc final : public Driver {
 public:
  bool Accepts(const ConnectionString& cs) const override { return OdbcTargetOf(cs).has_value(); }

  std::shared_ptr<Session> Connect(const ConnectionString& cs) const override {
    std::shared_ptr<OdbcPool> pool = OdbcPool::For(*OdbcTargetOf(cs));
    std::unique_ptr<OdbcConnection> connection = pool->Take();
    return std::make_shared<OdbcSession>(std::move(pool), std::move(connection));
  }
};

}  // namespace

OdbcSession::~OdbcSession() { pool_->Give(std::move(connection_), broken_); }

std::string OdbcSession::Adapt(std::string_view sql) const {
  return detail::Adapt(connection_->dialect(), sql);
}

std::string OdbcSession::CountQuery(std::string_view adapted) const {
  return detail::CountQuery(connection_->dialect(), adapted);
}

std::unique_ptr<Cursor> OdbcSession::Open(const std::string& adapted, int64_t offset) {
  RefuseStackedStatements(adapted);
  std::string body(StatementBody(adapted));
  if (body.empty()) throw Error::Database("Command text was not set for the command object.");
  const bool server = connection_->dialect() != Dialect::SqlServer;
  // A select is read in windows, unless it bounds its rows itself ("select top N"): then it runs as
  // it is, wrapped only to skip rows (MariaDB refuses to wrap one that repeats a column).
  if (server && IsSelect(body) && !HasTopLevelLimit(body))
    return std::make_unique<OdbcCursor>(shared_from_this(), body, offset, true);
  if (offset > 0) body = OffsetQuery(connection_->dialect(), body, offset);
  return std::make_unique<OdbcCursor>(shared_from_this(), body, 0, false);
}

std::unique_ptr<Cursor> OdbcSession::Prepare(const std::string& adapted) { return Open(adapted, 0); }

std::unique_ptr<Cursor> OdbcSession::PrepareFrom(const std::string& adapted, int64_t offset) {
  return Open(adapted, offset);
}

const Driver& OdbcDriver() {
  static const Odbc driver;
  return driver;
}

}  // namespace corvane::ado::detail
