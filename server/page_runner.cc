#include "page_runner.h"

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "error_page.h"

namespace corvane::server {

std::string CharsetOf(int codePage) { return codePage == kCodePageUtf8 ? "utf-8" : "gbk"; }

namespace {

PageReply ErrorReply(const Error& e, const std::string& url, int codePage,
                     const std::vector<std::string>& secrets) {
  PageReply reply;
  reply.status = 500;
  reply.contentType = "text/html; charset=" + CharsetOf(codePage);
  reply.body = EncodeCodePage(ErrorPageHtml(e.Number(), e.Description(), url, secrets), codePage);
  return reply;
}

}  // namespace

PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  std::shared_ptr<host::Application> application,
                  const std::vector<std::string>& secrets) {
  const int codePage = request.codePage;
  const std::string url = request.url;
  host::Page bound(std::move(request), session, std::move(application));
  try {
    PageContext ctx{bound.Request(), bound.Response(), *session.ptr(), bound.Server(),
                    *bound.ContextObject()->Application()};
    try {
      page(ctx);
    } catch (const Error&) {
      // The page ends as the host ended a failed script: its objects still get OnEndPage.
      try {
        bound.End();
      } catch (const Error&) {
      }
      throw;
    }
    bound.End();
  } catch (const Error& e) {
    return ErrorReply(e, url, codePage, secrets);
  }

  const host::Response& r = bound.Response();
  PageReply reply;
  reply.status = r.status;
  std::string type = r.contentType.empty() ? "text/html" : r.contentType;
  if (type.rfind("text/", 0) == 0 && type.find("charset") == std::string::npos)
    type += "; charset=" + CharsetOf(codePage);
  reply.contentType = type;
  reply.body = EncodeCodePage(r.Output(), codePage);
  reply.body += r.Binary();
  reply.headers = r.headers;
  if (!r.redirect.empty()) reply.headers.emplace_back("Location", r.redirect);
  return reply;
}

}  // namespace corvane::server
