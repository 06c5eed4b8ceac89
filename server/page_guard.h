// The rule a site sets for its pages: the host asks it before every page runs (after the session is
// found, before Session_OnStart and the page's own code), so no page can forget it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "corvane/host.h"

namespace corvane::server {

struct GuardRequest {
  std::string_view method;    // "GET", "POST", ...
  std::string_view sitePath;  // the page as the site names it ("/scheduler/manage.asp")
  const host::SessionObject& session;
  std::string_view remoteAddr;
  std::string_view contentType;  // the request's, as sent
  std::string_view body;         // the whole body (a view: large uploads are not copied)
};

struct GuardVerdict {
  int status = 0;                    // 0: the page runs; else the reply's status (302, 403, ...)
  std::string location;              // where a 302 sends the browser
  std::string message;               // the refusal page's text (UTF-8; escaped when sent)
  std::string logLine;               // written to the log when not empty
  host::NameValues serverVariables;  // given to the page's Request.ServerVariables when it runs
};

using PageGuard = std::function<GuardVerdict(const GuardRequest&)>;

}  // namespace corvane::server
