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
  std::string contentType;  // with the charset for text
  std::string body;         // bytes in the code page
  std::vector<std::pair<std::string, std::string>> headers;  // Response.AddHeader and Location
};

// "gbk" for 936, "utf-8" for 65001.
std::string CharsetOf(int codePage);

// A corvane::Error raised by the page (or by its end) gives the error page with status 500; the
// page's output so far is dropped. Every text in `secrets` is kept out of the error page. Other
// exceptions are rethrown.
PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  std::shared_ptr<host::Application> application,
                  const std::vector<std::string>& secrets = {});

}  // namespace corvane::server
