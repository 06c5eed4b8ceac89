// The scheduler's page attachment, trace switch and database connection.
#include "scheduler/scheduler.h"

#include "corvane/error.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

Variant scheduler::OnStartPage(Variant& sc) {
  page_.Take(sc);
  strURL = page_.Request().ServerVariables("URL").ToString();
  bDebug = false;
  return {};
}

// Stores the page's URL for the next page, lets go of the host objects and closes the connection.
// The close comes after the release, so with debug on its trace line has no response to go to and
// raises 91 once the connection is closed.
Variant scheduler::OnEndPage() {
  page_.Session().Set("strURL", Variant(strURL));
  page_.Release();
  CloseConnection();
  return {};
}

void scheduler::DebugMode() {
  bDebug = true;
  WriteTrace("##调试信息:进入调试模式<br>" + scheduling::kCrLf);
}

void scheduler::Init(Variant& ConnStr) {
  strConn = ConnStr.ToString();
  openDB();
}

void scheduler::openDB() { page_kit::OpenConnection(objConn, strConn, bDebug, page_.objResponse); }

void scheduler::CloseConnection() { page_kit::CloseConnection(objConn, bDebug, page_.objResponse); }

void scheduler::WriteTrace(const std::string& message) {
  if (bDebug) page_kit::WriteTrace(page_.objResponse, message);
}

Variant scheduler::SessionValue(const char* key) const { return page_.Session().Get(key); }

std::shared_ptr<ado::Recordset> scheduler::OpenRecordset(const std::string& sql) {
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open(sql, objConn, ado::adOpenKeyset, -1, -1);
  return rs;
}

}  // namespace corvane
