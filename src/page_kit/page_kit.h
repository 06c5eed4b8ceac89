// The page kit: what every component class shares with its page. The host objects it keeps from the
// ScriptingContext, the line end of its HTML, the hidden trace line, and the open and close of its
// one database connection.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "corvane/ado.h"
#include "corvane/host.h"
#include "corvane/variant.h"

namespace corvane::page_kit {

// Every line of the components' HTML and traces ends so.
inline const std::string kCrLf = "\r\n";

// The five host objects a component keeps between OnStartPage and OnEndPage.
struct PageObjects {
  std::shared_ptr<host::Response> objResponse;
  std::shared_ptr<host::Request> objRequest;
  std::shared_ptr<host::Server> objServer;
  std::shared_ptr<host::Application> objApplication;
  std::shared_ptr<host::SessionObject> objSession;

  // Takes Response, Request, Server, Application and Session from the context, in that order.
  // Raises 424 when `scriptingContext` is not a ScriptingContext object.
  void Take(const Variant& scriptingContext);
  // Sets Response, Request, Server, Application and Session to nothing, in that order.
  void Release();

  // The page's response; raises 91 (object not set) when the object is not attached.
  host::Response& Response() const;
  host::Request& Request() const;
  host::SessionObject& Session() const;
};

// The trace line: one Write of "<span id=debugID style='display:none'>" + message + "</span>".
// Raises 91 when there is no response.
void WriteTrace(const std::shared_ptr<host::Response>& response, std::string_view message);
std::string TraceLine(std::string_view message);

// The open routine: a new Connection in `objConn` (an earlier one is released, not closed), opened
// on `strConn` with empty user and password and options -1; then, if `bDebug`, the trace
// "##调试信息:打开数据库 OK!<br>" + CR LF.
void OpenConnection(std::shared_ptr<ado::Connection>& objConn, const std::string& strConn, bool bDebug,
                    const std::shared_ptr<host::Response>& response);
// The close routine: if `objConn` is set, Close it and release it; then, if `bDebug`, the trace
// "##调试信息:关闭数据库 OK!<br>" + CR LF (also when there was nothing to close).
void CloseConnection(std::shared_ptr<ado::Connection>& objConn, bool bDebug,
                     const std::shared_ptr<host::Response>& response);

}  // namespace corvane::page_kit
