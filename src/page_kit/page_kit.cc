#include "page_kit/page_kit.h"

#include "corvane/error.h"

namespace corvane::page_kit {

void PageObjects::Take(const Variant& scriptingContext) {
  auto context = scriptingContext.ToObject().As<host::ScriptingContext>();
  if (!context) throw Error::ObjectRequired();
  objResponse = context->Response();
  objRequest = context->Request();
  objServer = context->Server();
  objApplication = context->Application();
  objSession = context->Session();
}

void PageObjects::Release() {
  objResponse.reset();
  objRequest.reset();
  objServer.reset();
  objApplication.reset();
  objSession.reset();
}

host::Response& PageObjects::Response() const {
  if (!objResponse) throw Error::ObjectNotSet();
  return *objResponse;
}

host::Request& PageObjects::Request() const {
  if (!objRequest) throw Error::ObjectNotSet();
  return *objRequest;
}

host::SessionObject& PageObjects::Session() const {
  if (!objSession) throw Error::ObjectNotSet();
  return *objSession;
}

std::string TraceLine(std::string_view message) {
  std::string line = "<span id=debugID style='display:none'>";
  line += message;
  line += "</span>";
  return line;
}

void WriteTrace(const std::shared_ptr<host::Response>& response, std::string_view message) {
  if (!response) throw Error::ObjectNotSet();
  response->Write(TraceLine(message));
}

void OpenConnection(std::shared_ptr<ado::Connection>& objConn, const std::string& strConn, bool bDebug,
                    const std::shared_ptr<host::Response>& response) {
  objConn = std::make_shared<ado::Connection>();
  objConn->Open(strConn, "", "", -1);
  if (bDebug) WriteTrace(response, "##调试信息:打开数据库 OK!<br>" + kCrLf);
}

void CloseConnection(std::shared_ptr<ado::Connection>& objConn, bool bDebug,
                     const std::shared_ptr<host::Response>& response) {
  if (objConn) {
    objConn->Close();
    objConn.reset();
  }
  if (bDebug) WriteTrace(response, "##调试信息:关闭数据库 OK!<br>" + kCrLf);
}

}  // namespace corvane::page_kit
