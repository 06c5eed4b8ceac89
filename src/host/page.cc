#include "corvane/host.h"

namespace corvane::host {

Page::Page(PageRequest request, host::Session session, std::shared_ptr<host::Application> application)
    : context_(std::make_shared<ScriptingContext>()) {
  int codePage = request.codePage;
  context_->request_ = std::make_shared<host::Request>(
      std::move(request.url), std::move(request.queryString), std::move(request.contentType),
      std::move(request.body), std::move(request.method), codePage, std::move(request.serverVariables));
  context_->response_ = std::make_shared<host::Response>();
  context_->session_ = session.ptr();
  context_->server_ = std::make_shared<host::Server>();
  context_->server_->context_ = context_;
  context_->server_->codePage_ = codePage;
  context_->application_ = application ? std::move(application) : std::make_shared<host::Application>();
}

Page::~Page() {
  try {
    End();
  } catch (...) {
    // A page that is torn down without End() has no one to report to.
  }
}

Variant Page::Context() const { return Variant(Object(context_)); }

void Page::End() {
  if (ended_) return;
  ended_ = true;
  context_->server_->EndPage();
}

}  // namespace corvane::host
