// A session of the ODBC driver: one pooled connection, given back to its pool when the last
// connection or recordset using it lets go. The dialect is the one of the product the connection
// reached.
#pragma once

#include <memory>

#include "ado/driver.h"
#include "ado/odbc/odbc_connection.h"

namespace corvane::ado::detail {

class OdbcPool;

class OdbcSession final : public Session, public std::enable_shared_from_this<OdbcSession> {
 public:
  OdbcSession(std::shared_ptr<OdbcPool> pool, std::unique_ptr<OdbcConnection> connection)
      : pool_(std::move(pool)), connection_(std::move(connection)) {}
  ~OdbcSession() override;

  std::string Adapt(std::string_view sql) const override;
  std::string CountQuery(std::string_view adapted) const override;
  std::unique_ptr<Cursor> Prepare(const std::string& adapted) override;
  std::unique_ptr<Cursor> PrepareFrom(const std::string& adapted, int64_t offset) override;

  OdbcConnection& connection() { return *connection_; }
  // The connection failed in a way that leaves it unusable: it is closed, not pooled, at the end.
  void MarkBroken() { broken_ = true; }

 private:
  std::unique_ptr<Cursor> Open(const std::string& adapted, int64_t offset);

  std::shared_ptr<OdbcPool> pool_;
  std::unique_ptr<OdbcConnection> connection_;
  bool broken_ = false;
};

const Driver& OdbcDriver();

}  // namespace corvane::ado::detail
