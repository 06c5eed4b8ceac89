#include "page_runner.h"

#include "corvane/codepage.h"
#include "corvane/error.h"
#include "error_page.h"

namespace corvane::server {

PageReply ErrorReply(const Error& e, const std::string& url, int codePage,
                     const std::vector<std::string>& secrets) {
  ErrorReport report = ReportOf(e, url);
  PageReply reply;
  reply.status = 500;
  reply.contentType = "text/html; charset=" + CharsetName(codePage);
  reply.body = EncodeCodePage(ErrorPageHtml(report, secrets), codePage);
  reply.errorLog = ErrorLogLine(report, secrets);
  return reply;
}

PageReply RunInPage(host::PageRequest request, host::Session session, host::PageHost pageHost,
                    const std::function<void(host::Page&)>& body, const std::vector<std::string>& secrets) {
  const std::string url = request.url;
  host::Page page(std::move(request), std::move(session), std::move(pageHost));
  try {
    body(page);
  } catch (const PageEnd&) {
    page.Response().MarkEnded();
  } catch (const Error& e) {
    // The page ends as the host ended a failed script: its objects still get OnEndPage, and the
    // page's own error is the one shown.
    PageReply reply = ErrorReply(e, url, page.Response().CodePage(), secrets);
    reply.endPageErrors = page.End();
    reply.logEntries = page.Response().LogEntries();
    return reply;
  }
  PageReply reply;
  reply.endPageErrors = page.End();
  const host::Response& r = page.Response();
  reply.status = r.Status();
  reply.contentType = r.ReplyContentType();
  reply.body = r.ReplyBody();
  reply.headers = r.ReplyHeaders();
  reply.logEntries = r.LogEntries();
  return reply;
}

PageReply RunPage(const PageFunction& page, host::PageRequest request, host::Session session,
                  host::PageHost pageHost, const std::vector<std::string>& secrets,
                  const std::function<void(host::Page&)>& beforePage) {
  return RunInPage(
      std::move(request), std::move(session), std::move(pageHost),
      [&](host::Page& bound) {
        if (beforePage) beforePage(bound);
        PageContext ctx{bound.Request(), bound.Response(), *bound.ContextObject()->Session(), bound.Server(),
                        *bound.ContextObject()->Application()};
        page(ctx);
      },
      secrets);
}

std::string EndPageErrorLine(const std::string& url, const host::EndPageError& e) {
  return EscapeForLog("corvane-server: " + url + ": " + e.className + ".OnEndPage raised error " +
                      std::to_string(e.error.Number()) + ": " + e.error.Description());
}

}  // namespace corvane::server
