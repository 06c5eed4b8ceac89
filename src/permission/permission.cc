// Permission's page attachment, its Session property, the connection and the trace line.
#include "permission/permission.h"

#include "corvane/error.h"

namespace corvane {

Variant Permission::OnStartPage(Variant& sc) {
  page_.Take(sc);
  bDebug = false;
  return {};
}

Variant Permission::OnEndPage() {
  page_.Release();
  return {};
}

void Permission::openDB(Variant& strConn) {
  // Nothing is traced: the class has no way to turn its debug switch on.
  page_kit::OpenConnection(objConn, strConn.ToString(), bDebug, page_.objResponse);
}

void Permission::PrintDebug(Variant& strTmp) { page_kit::WriteTrace(page_.objResponse, strTmp.Text()); }

Variant Permission::Session() const {
  if (!page_.objSession) return Variant(Object());
  return Variant(Object(page_.objSession));
}

void Permission::SetSession(const Variant& session) {
  Object obj = session.ToObject();  // 424 for a value that is no object at all
  if (obj.IsNothing()) {
    page_.objSession.reset();
    return;
  }
  auto sessionObject = obj.As<host::SessionObject>();
  if (!sessionObject) throw Error::TypeMismatch();
  page_.objSession = std::move(sessionObject);
}

const std::shared_ptr<ado::Connection>& Permission::Connection() const {
  if (!objConn) throw Error::ObjectNotSet();
  return objConn;
}

host::SessionObject& Permission::SessionValues() const { return page_.Session(); }

std::string Permission::SessionText(std::string_view key) const { return SessionValues().Get(key).Text(); }

std::shared_ptr<ado::Recordset> Permission::Query(const std::string& sql) const {
  const auto& conn = Connection();
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open(sql, conn, ado::adOpenKeyset, -1, -1);
  return rs;
}

void Permission::Execute(const std::string& sql) const { Connection()->Execute(sql, -1); }

}  // namespace corvane
