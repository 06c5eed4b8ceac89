#include "page_runner.h"

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "error_page.h"

namespace corvane::server {

namespace {

PageReply ErrorReply(const Error& e, const std::string& url, int codePage,
                     const std::vector<std::string>& secrets) {
  PageReply reply;
  reply.status = 500;
  reply.contentType = "text/html; charset=" + CharsetName(codePage);
  reply.body = EncodeCodePage(ErrorPageHtml(e.Number(), e.Description(), url, secrets), codePage);
  return reply;
}

}  // namespace

PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  host::PageHost pageHost, const std::vector<std::string>& secrets) {
  const int codePage = request.codePage;
  const std::string url = request.url;
  host::Page bound(std::move(request), session, std::move(pageHost));
  try {
    PageContext ctx{bound.Request(), bound.Response(), *session.ptr(), bound.Server(),
                    *bound.ContextObject()->Application()};
    page(ctx);
  } catch (const Error& e) {
    // The page ends as the host ended a failed script: its objects still get OnEndPage, and the
    // page's own error is the one shown.
    PageReply reply = ErrorReply(e, url, codePage, secrets);
    reply.endPageErrors = bound.End();
    return reply;
  }

  PageReply reply;
  reply.endPageErrors = bound.End();
  const host::Response& r = bound.Response();
  reply.status = r.Status();
  std::string type = r.ContentType().empty() ? "text/html" : r.ContentType();
  if (type.rfind("text/", 0) == 0 && type.find("charset") == std::string::npos)
    type += "; charset=" + CharsetName(codePage);
  reply.contentType = type;
  reply.body = EncodeCodePage(r.Output(), codePage);
  reply.body += r.Binary();
  reply.headers = r.AddedHeaders();
  if (!r.RedirectLocation().empty()) reply.headers.emplace_back("Location", r.RedirectLocation());
  return reply;
}

std::string EndPageErrorLine(const std::string& url, const host::EndPageError& e) {
  return "corvane-server: " + url + ": " + e.className + ".OnEndPage raised error " +
         std::to_string(e.error.Number()) + ": " + e.error.Description();
}

}  // namespace corvane::server
