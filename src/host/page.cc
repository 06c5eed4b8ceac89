// A page: the host objects bound to one request and its session.
#include "corvane/host.h"

namespace corvane::host {

Page::Page(PageRequest request, host::Session session, PageHost host)
    : context_(std::make_shared<ScriptingContext>()) {
  int codePage = request.codePage;
  context_->server_ = std::make_shared<host::Server>();
  context_->server_->currentPath_ = request.url;
  context_->request_ = std::make_shared<host::Request>(
      std::move(request.url), std::move(request.queryString), std::move(request.contentType),
      std::move(request.body), std::move(request.method), codePage, std::move(request.serverVariables));
  context_->response_ = std::make_shared<host::Response>(codePage);
  context_->session_ = session.ptr();
  context_->session_->AttachResponse(context_->response_);
  context_->server_->context_ = context_;
  context_->server_->createObject_ = std::move(host.createObject);
  context_->server_->runPage_ = std::move(host.runPage);
  context_->server_->siteFolder_ = std::move(host.siteFolder);
  context_->server_->codePage_ = codePage;
  context_->application_ =
      host.application ? std::move(host.application) : std::make_shared<host::Application>();
}

// A page torn down without End() still ends its objects; nobody is left to hear of their errors.
Page::~Page() {
  try {
    End();
  } catch (...) {
  }
}

Variant Page::Context() const { return Variant(Object(context_)); }

std::vector<EndPageError> Page::End() {
  if (ended_) return {};
  ended_ = true;
  std::vector<EndPageError> errors = context_->server_->EndPage();
  context_->application_->UnlockAll();
  context_->session_->AttachResponse({});
  return errors;
}

}  // namespace corvane::host
