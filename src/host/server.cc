#include <cctype>
#include <exception>

#include "corvane/error.h"
#include "corvane/host.h"
#include "host/host_classes.h"
#include "runtime/args.h"

namespace corvane::host {

Object Server::CreateObject(std::string_view progID) {
  Object obj = corvane::CreateObject(progID);
  if (obj.Has("OnStartPage")) {
    auto context = context_.lock();
    if (!context) throw Error::ObjectNotSet();
    Args args{Variant(Object(context))};
    obj.Invoke("OnStartPage", args);
  }
  if (obj.Has("OnEndPage")) attached_.push_back(obj);
  return obj;
}

// Every attached object gets its OnEndPage, even when an earlier one fails (its session values and
// its connection close must not be lost); the first failure is raised once all have run.
void Server::EndPage() {
  std::vector<Object> attached = std::move(attached_);
  attached_.clear();
  std::exception_ptr first;
  for (const Object& obj : attached) {
    try {
      obj.Invoke("OnEndPage");
    } catch (...) {
      if (!first) first = std::current_exception();
    }
  }
  if (first) std::rethrow_exception(first);
}

std::string Server::URLEncode(std::string_view text) const {
  static const char* hex = "0123456789ABCDEF";
  std::string bytes = EncodeCodePage(text, codePage_);
  std::string out;
  for (unsigned char c : bytes) {
    if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '*') {
      out += static_cast<char>(c);
    } else if (c == ' ') {
      out += '+';
    } else {
      out += '%';
      out += hex[c >> 4];
      out += hex[c & 15];
    }
  }
  return out;
}

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

const ClassInfo& Server::Info() const { return ServerClass(); }

Variant Server::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kServerCreateObject: return Variant(CreateObject(Arg(args, 0).ToString()));
    case kServerURLEncode: return Variant(URLEncode(Arg(args, 0).Text()));
    case kServerHTMLEncode: return Variant(HTMLEncode(Arg(args, 0).Text()));
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

const ClassInfo& ScriptingContext::Info() const { return ScriptingContextClass(); }

Variant ScriptingContext::InvokeMember(int32_t dispid, InvokeKind kind, Args& args) {
  switch (dispid) {
    case kContextRequest: return Variant(Object(request_));
    case kContextResponse: return Variant(Object(response_));
    case kContextSession: return Variant(Object(session_));
    case kContextServer: return Variant(Object(server_));
    case kContextApplication: return Variant(Object(application_));
  }
  throw Error::NoSuchMember(std::to_string(dispid));
}

}  // namespace corvane::host
