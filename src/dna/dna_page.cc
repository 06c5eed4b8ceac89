// DNA's page attachment, hidden trace line and connection close.
#include "corvane/ado.h"
#include "corvane/host.h"
#include "dna/dna.h"
#include "page_kit/page_kit.h"

namespace corvane {

Variant DNA::OnStartPage(const Variant& sc) {
  page_.Take(sc);
  bDebug = false;
  strAction.clear();
  bSystemID = false;
  return {};
}

Variant DNA::OnEndPage() {
  Session().Set("strURL", Variant(strURL));
  page_.Release();
  return {};
}

void DNA::DebugMode() {
  bDebug = true;
  WriteTrace(std::string("##调试信息:进入调试模式<br>") + std::string(page_kit::kCrLf));
}

void DNA::CloseDNA() { page_kit::CloseConnection(objConn, bDebug, page_.objResponse); }

// Writes unconditionally: callers that trace only in debug mode test bDebug themselves.
void DNA::WriteTrace(std::string_view message) { page_kit::WriteTrace(page_.objResponse, message); }

host::Response& DNA::Out() { return page_.Response(); }

host::SessionObject& DNA::Session() { return page_.Session(); }

Variant DNA::SessionValue(std::string_view key) { return Session().Get(key); }

std::string DNA::SessionText(std::string_view key) { return Session().Get(key).Text(); }

}  // namespace corvane
