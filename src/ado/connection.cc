// Connection: a session of the driver its string names, kept while open.
#include "ado/connection_impl.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado {

Connection::Connection() : impl_(std::make_shared<detail::ConnectionImpl>()) {}

Connection::~Connection() = default;

void Connection::Open(const std::string& connectionString, const std::string& userID,
                      const std::string& password, int options) {
  if (IsOpen()) throw Error::ObjectIsOpen();
  connectionString_ = connectionString;
  impl_->session = detail::Connect(connectionString);
}

void Connection::Close() {
  if (!IsOpen()) throw Error::ObjectClosed();
  // Recordsets opened on this connection keep the session (and its handle) until they close; the
  // handle goes back to the pool when the last of them lets go.
  impl_->session.reset();
}

void Connection::SetConnectionString(std::string connectionString) {
  if (IsOpen()) throw Error::ObjectIsOpen();
  connectionString_ = std::move(connectionString);
}

bool Connection::IsOpen() const { return impl_->session != nullptr; }

const std::string& Connection::ConnectionString() const { return connectionString_; }

int32_t Connection::Execute(std::string_view sql, int options) {
  if (!IsOpen()) throw Error::ConnectionUnusable();
  detail::Session& session = *impl_->session;
  int64_t changed = detail::RunChanging(*session.Prepare(session.Adapt(sql)));
  return changed > INT32_MAX ? INT32_MAX : static_cast<int32_t>(changed);
}

}  // namespace corvane::ado
