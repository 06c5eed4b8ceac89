// Runs one page: binds the host objects to the request, calls the page function, ends the page (the
// objects that Server.CreateObject attached get OnEndPage) and turns the Response into the HTTP
// reply: the text converted to the code page with the matching charset, then any binary writes.
#pragma once

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
  host::NameValues headers;  // Response.AddHeader and Location
  // Errors that objects raised in their OnEndPage once the page was written: the page is served as
  // written, and the host logs these.
  std::vector<host::EndPageError> endPageErrors;
};

// A corvane::Error raised by the page gives the error page with status 500; the page's output so far
// is dropped. Every text in `secrets` is kept out of the error page. Other exceptions are rethrown.
PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  host::PageHost pageHost, const std::vector<std::string>& secrets = {});

// The log line of an error in OnEndPage: the page, the object's class, the number and the description.
std::string EndPageErrorLine(const std::string& url, const host::EndPageError& e);

}  // namespace corvane::server
