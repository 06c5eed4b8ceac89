// Recordset: opening, moving and closing. Fields are in recordset_fields.cc, paging in
// recordset_paging.cc.
#include "ado/ado_errors.h"
#include "ado/connection_impl.h"
#include "ado/recordset_impl.h"
#include "corvane/ado.h"

namespace corvane::ado {

namespace {

std::shared_ptr<detail::Session> SessionOf(const Connection& connection) {
  if (!connection.IsOpen()) throw detail::ConnectionUnusable();
  return connection.impl()->session;
}

void CheckCursorType(int cursorType) {
  if (cursorType < adOpenUnspecified || cursorType > adOpenStatic) throw detail::ArgumentsOutOfRange();
}

void OpenOn(detail::RecordsetImpl& impl, std::shared_ptr<detail::Session> session,
            std::string_view source) {
  std::string adapted = session->Adapt(source);
  std::unique_ptr<detail::Cursor> cursor = session->Prepare(adapted);
  impl.Start(std::move(session), std::move(adapted), std::move(cursor));
}

}  // namespace

Recordset::Recordset() : impl_(std::make_unique<detail::RecordsetImpl>()) {}

Recordset::~Recordset() = default;

void Recordset::Open(std::string_view source, const Variant& activeConnection, int cursorType,
                     int lockType, int options) {
  if (IsOpen()) throw detail::ObjectIsOpen();
  CheckCursorType(cursorType);
  if (activeConnection.IsObject()) {
    std::shared_ptr<Connection> connection = activeConnection.ToObject().As<Connection>();
    if (!connection) throw detail::ArgumentsOutOfRange();
    OpenOn(*impl_, SessionOf(*connection), source);
  } else if (activeConnection.IsString()) {
    // A connection of the recordset's own, from the pool; it goes back when the recordset closes.
    OpenOn(*impl_, detail::Connect(*activeConnection.StringPtr()), source);
  } else {
    throw detail::ConnectionUnusable();
  }
}

void Recordset::Open(std::string_view source, const std::shared_ptr<Connection>& connection,
                     int cursorType, int lockType, int options) {
  if (IsOpen()) throw detail::ObjectIsOpen();
  CheckCursorType(cursorType);
  if (!connection) throw detail::ConnectionUnusable();
  OpenOn(*impl_, SessionOf(*connection), source);
}

void Recordset::Close() {
  impl_->RequireOpen();
  impl_->Reset();
}

bool Recordset::IsOpen() const { return impl_->session != nullptr; }

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
  impl_->Restart(impl_->adapted, 0);
}

}  // namespace corvane::ado
