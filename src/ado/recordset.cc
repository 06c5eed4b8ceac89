// Recordset: opening, moving and closing. Fields are in recordset_fields.cc, paging in
// recordset_paging.cc.
#include "ado/access.h"
#include "corvane/ado.h"
#include "corvane/error.h"

namespace corvane::ado {

namespace {

std::shared_ptr<detail::Session> SessionOf(const Connection& connection) {
  if (!connection.IsOpen()) throw Error::ConnectionUnusable();
  return detail::Access::Of(connection).session;
}

void CheckCursorType(int cursorType) {
  if (cursorType < adOpenUnspecified || cursorType > adOpenStatic) throw Error::ArgumentsOutOfRange();
}

}  // namespace

Recordset::Recordset() : impl_(std::make_unique<detail::RecordsetImpl>()) {}

Recordset::~Recordset() = default;

void Recordset::Open(std::string_view source, const Variant& activeConnection, int cursorType, int lockType,
                     int options) {
  if (IsOpen()) throw Error::ObjectIsOpen();
  CheckCursorType(cursorType);
  if (activeConnection.IsObject()) {
    std::shared_ptr<Connection> connection = activeConnection.ToObject().As<Connection>();
    if (!connection) throw Error::ArgumentsOutOfRange();
    impl_->Open(SessionOf(*connection), source);
  } else if (activeConnection.IsString()) {
    // A connection of the recordset's own, from the pool; it goes back when the recordset closes.
    impl_->Open(detail::Connect(*activeConnection.StringPtr()), source);
  } else {
    throw Error::ConnectionUnusable();
  }
}

void Recordset::Open(std::string_view source, const std::shared_ptr<Connection>& connection, int cursorType,
                     int lockType, int options) {
  if (IsOpen()) throw Error::ObjectIsOpen();
  CheckCursorType(cursorType);
  if (!connection) throw Error::ConnectionUnusable();
  impl_->Open(SessionOf(*connection), source);
}

void Recordset::Close() {
  impl_->RequireOpen();
  impl_->Reset();
}

bool Recordset::IsOpen() const { return impl_->session != nullptr; }

const std::string& Recordset::Source() const { return impl_->Source(); }

bool Recordset::Eof() const {
  impl_->RequireOpen();
  return impl_->eof;
}

bool Recordset::Bof() const {
  impl_->RequireOpen();
  return impl_->eof && impl_->position == 0;
}

void Recordset::MoveNext() {
  impl_->RequireOpen();
  impl_->RequireRecord();
  impl_->Step();
}

void Recordset::MoveFirst() {
  impl_->RequireOpen();
  impl_->Restart(0);
}

}  // namespace corvane::ado
