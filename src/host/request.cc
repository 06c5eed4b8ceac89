// Request: the query string, the urlencoded form, the cookies and the server variables of one request,
// decoded in the page's code page, and the raw body.
#include <algorithm>

#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::host {

Request::Request(std::string url, std::string queryString, std::string contentType, std::string body,
                 std::string method, int codePage, NameValues serverVariables)
    : url_(std::move(url)),
      queryString_(std::move(queryString)),
      contentType_(std::move(contentType)),
      body_(std::move(body)),
      method_(std::move(method)),
      codePage_(codePage) {
  if (method_.empty()) method_ = body_.empty() ? "GET" : "POST";
  query_ = ParseUrlEncoded(queryString_, codePage_);
  // Only an urlencoded body fills Form; a multipart body is read raw (TotalBytes, BinaryRead).
  if (LCase(contentType_).rfind("application/x-www-form-urlencoded", 0) == 0)
    form_ = ParseUrlEncoded(body_, codePage_);
  // The request's own variables first, then the host's (REMOTE_ADDR, the HTTP_* headers).
  for (const char* name : {"URL", "PATH_INFO", "SCRIPT_NAME"}) serverVariables_.Add(name, url_);
  serverVariables_.Add("QUERY_STRING", queryString_);
  serverVariables_.Add("REQUEST_METHOD", method_);
  serverVariables_.Add("CONTENT_TYPE", contentType_);
  serverVariables_.Add("CONTENT_LENGTH", std::to_string(body_.size()));
  for (auto& [name, value] : serverVariables) {
    if (EqualsNoCase(name, "HTTP_COOKIE")) cookies_ = ParseCookies(value, codePage_);
    serverVariables_.Add(std::move(name), std::move(value));
  }
}

Variant Request::Form(std::string_view name) const { return form_.Item(name); }
Variant Request::QueryString(std::string_view name) const { return query_.Item(name); }
Variant Request::ServerVariables(std::string_view name) const { return serverVariables_.Item(name); }
Variant Request::Cookies(std::string_view name) const { return cookies_.Item(name); }

Variant Request::Item(std::string_view name) const {
  for (const ValueCollection* c : {&query_, &form_, &cookies_, &serverVariables_}) {
    Variant v = c->Item(name);
    if (!v.IsEmpty()) return v;
  }
  return Variant();
}

Variant Request::BinaryRead(int32_t& count) {
  std::string_view bytes = BinaryReadView(count);
  return Variant::FromBytes(Bytes(bytes.begin(), bytes.end()));
}

std::string_view Request::BinaryReadView(int32_t& count) {
  if (count < 0) throw Error::InvalidCall();
  size_t n = std::min<size_t>(static_cast<size_t>(count), body_.size() - readPos_);
  std::string_view bytes(body_.data() + readPos_, n);
  readPos_ += n;
  count = static_cast<int32_t>(n);
  return bytes;
}

}  // namespace corvane::host
