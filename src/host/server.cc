// Server: objects created for the page and attached to it, and the encoders.
#include <cctype>

#include "corvane/error.h"
#include "corvane/host.h"

namespace corvane::host {

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

}  // namespace corvane::host
