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
      codePage_(codePage),
      serverVariables_(std::move(serverVariables)) {
  if (method_.empty()) method_ = body_.empty() ? "GET" : "POST";
  query_ = ParseUrlEncoded(queryString_, codePage_);
  // Only an urlencoded body fills Form; a multipart body is read raw (TotalBytes, BinaryRead).
  if (LCase(contentType_).rfind("application/x-www-form-urlencoded", 0) == 0)
    form_ = ParseUrlEncoded(body_, codePage_);
}

Variant Request::Form(std::string_view name) const { return form_.Item(name); }
Variant Request::QueryString(std::string_view name) const { return query_.Item(name); }

Variant Request::ServerVariables(std::string_view name) const {
  std::string key = UCase(name);
  if (key == "URL" || key == "PATH_INFO" || key == "SCRIPT_NAME") return Variant(url_);
  if (key == "QUERY_STRING") return Variant(queryString_);
  if (key == "REQUEST_METHOD") return Variant(method_);
  if (key == "CONTENT_TYPE") return Variant(contentType_);
  if (key == "CONTENT_LENGTH") return Variant(std::to_string(body_.size()));
  for (const auto& [n, v] : serverVariables_)
    if (EqualsNoCase(n, key)) return Variant(v);
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
