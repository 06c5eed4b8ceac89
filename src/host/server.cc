// Server: objects created for the page and attached to it, the encoders, and the page's place in the
// site (MapPath, Execute, Transfer).
#include "corvane/error.h"
#include "corvane/host.h"

namespace corvane::host {

namespace {

// Server.Execute inside an executed page, and so on: deeper than this is a page executing itself.
constexpr int kMaxExecuteDepth = 16;

}  // namespace

Object Server::CreateObject(std::string_view progID) {
  if (!createObject_) throw Error::CannotCreateObject(std::string(progID));
  Object obj = createObject_(progID);
  if (obj.Has("OnStartPage")) {
    auto context = context_.lock();
    if (!context) throw Error::ObjectNotSet();
    Args args{Variant(Object(context))};
    obj.Invoke("OnStartPage", args);
  }
  if (obj.Has("OnEndPage")) attached_.push_back(obj);
  return obj;
}

// Every attached object gets its OnEndPage, even when an earlier one fails: its session values and
// its connection close must not be lost.
std::vector<EndPageError> Server::EndPage() {
  std::vector<Object> attached = std::move(attached_);
  attached_.clear();
  std::vector<EndPageError> errors;
  for (const Object& obj : attached) {
    try {
      obj.Invoke("OnEndPage");
    } catch (const Error& e) {
      errors.push_back({std::string(obj.get()->Info().className), e});
    }
  }
  return errors;
}

int Server::CodePage() const {
  auto context = context_.lock();
  return context ? context->Response()->CodePage() : codePage_;
}

std::string Server::URLEncode(std::string_view text) const { return UrlEncode(text, CodePage()); }

std::string HtmlEncode(std::string_view s) {
  std::string out;
  for (char c : s) {
    switch (c) {
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '&': out += "&amp;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string Server::HTMLEncode(std::string_view text) const { return HtmlEncode(text); }

std::string Server::MapPath(std::string_view path) const {
  if (siteFolder_.empty()) throw HostError("Server.MapPath: the host has no site folder");
  std::optional<std::string> sitePath = ResolveSitePath(currentPath_, path);
  if (!sitePath) throw HostError("Server.MapPath: the path leaves the site or is not a site path");
  return LocalPathIn(siteFolder_, *sitePath);
}

void Server::Execute(std::string_view path) {
  if (!runPage_) throw HostError("Server.Execute: the host runs no script pages");
  std::optional<std::string> sitePath = ResolveSitePath(currentPath_, path);
  if (!sitePath) throw HostError("Server.Execute: the path leaves the site or is not a site path");
  if (executeDepth_ >= kMaxExecuteDepth) throw HostError("Server.Execute: pages nested too deep");
  auto context = context_.lock();
  if (!context) throw Error::ObjectNotSet();
  struct Nested {  // the executed page is the current one while it runs
    Server& s;
    std::string outer;
    Nested(Server& server, std::string inner) : s(server), outer(std::move(server.currentPath_)) {
      s.currentPath_ = std::move(inner);
      ++s.executeDepth_;
    }
    ~Nested() {
      s.currentPath_ = std::move(outer);
      --s.executeDepth_;
    }
  } nested(*this, *sitePath);
  runPage_(*sitePath, *context);
}

void Server::Transfer(std::string_view path) {
  Execute(path);
  if (auto context = context_.lock()) context->Response()->MarkEnded();
  throw PageEnd{};
}

void Server::SetScriptTimeout(int seconds) {
  if (seconds < 1) throw Error::InvalidCall();
  scriptTimeout_ = seconds;
}

}  // namespace corvane::host
