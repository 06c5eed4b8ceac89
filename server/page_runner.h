// Runs one page: binds the host objects to the request, runs the page (a C++ function, or whatever
// the caller runs in it), ends the page (the objects that Server.CreateObject attached get
// OnEndPage) and turns the Response into the HTTP reply: the text converted to the code page with the
// matching charset, then any binary writes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "corvane/host.h"
#include "page_registry.h"

namespace corvane::server {

struct PageReply {
  int status = 200;
  std::string contentType;   // with the charset for text
  std::string body;          // bytes in the code page
  host::NameValues headers;  // Response.AddHeader, Location, Expires, Cache-Control, Set-Cookie
  // Errors that objects raised in their OnEndPage once the page was written: the page is served as
  // written, and the host logs these.
  std::vector<host::EndPageError> endPageErrors;
  // The log line of the error that gave the error page; "" when the page ran.
  std::string errorLog;
  // What the page gave Response.AppendToLog, also when it failed afterwards.
  std::vector<std::string> logEntries;
};

// Runs `body` in a host::Page bound to the request. A corvane::Error it raises gives the error page
// with status 500 (the page's output so far is dropped, `secrets` kept out of the page); a PageEnd
// (Response.End) ends it normally. Other exceptions are rethrown.
PageReply RunInPage(host::PageRequest request, host::Session session, host::PageHost pageHost,
                    const std::function<void(host::Page&)>& body,
                    const std::vector<std::string>& secrets = {});

// A C++ page; `beforePage` (when set) runs first in the same page, as Session_OnStart does for a new
// session.
PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  host::PageHost pageHost, const std::vector<std::string>& secrets = {},
                  const std::function<void(host::Page&)>& beforePage = nullptr);

// The error page's reply for an error raised outside a page (a script page that does not compile).
PageReply ErrorReply(const Error& e, const std::string& url, int codePage,
                     const std::vector<std::string>& secrets);

// The log line of an error in OnEndPage: the page, the object's class, the number and the description.
std::string EndPageErrorLine(const std::string& url, const host::EndPageError& e);

}  // namespace corvane::server
