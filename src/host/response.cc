// Response: what a page writes, and the status, headers and cookies of its reply.
#include <cmath>
#include <cstdio>
#include <ctime>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::host {

namespace {

std::string_view ReasonOf(int status) {
  switch (status) {
    case 200: return "OK";
    case 201: return "Created";
    case 204: return "No Content";
    case 301: return "Moved Permanently";
    case 302: return "Object Moved";
    case 304: return "Not Modified";
    case 400: return "Bad Request";
    case 401: return "Unauthorized";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return "";
  }
}

}  // namespace

void Response::Write(const Variant& v) {
  if (v.IsObject()) return Write(v.DefaultValue());  // Response.Write rs("name") writes the value
  if (v.IsNull() || v.IsEmpty()) return;
  if (const std::string* s = v.StringPtr()) return Write(std::string_view(*s));
  Write(std::string_view(v.ToString()));
}

void Response::Write(std::string_view utf8) {
  if (output_.capacity() < kFirstCapacity) {
    output_.reserve(kFirstCapacity);
    writeEnds_.reserve(64);
  }
  output_.append(utf8);
  writeEnds_.push_back(output_.size());
}

std::vector<std::string> Response::Writes() const {
  std::vector<std::string> writes;
  writes.reserve(writeEnds_.size());
  size_t start = 0;
  for (size_t end : writeEnds_) {
    writes.push_back(output_.substr(start, end - start));
    start = end;
  }
  return writes;
}

void Response::BinaryWrite(const Bytes& bytes) { binary_.append(bytes.begin(), bytes.end()); }

void Response::Redirect(std::string url) {
  status_ = 302;
  statusText_.clear();
  redirect_ = std::move(url);
}

void Response::AddHeader(std::string name, std::string value) {
  headers_.emplace_back(std::move(name), std::move(value));
}

void Response::SetContentType(std::string type) { contentType_ = std::move(type); }

void Response::End() {
  ended_ = true;
  throw PageEnd{};
}

void Response::Clear() {
  output_.clear();
  writeEnds_.clear();
  binary_.clear();
}

void Response::SetStatus(std::string_view status) {
  std::string line = Trim(status);
  size_t digits = 0;
  while (digits < line.size() && line[digits] >= '0' && line[digits] <= '9') ++digits;
  if (digits != 3 || line[0] == '0') throw Error::InvalidCall();
  status_ = std::stoi(line.substr(0, 3));
  statusText_ = Trim(std::string_view(line).substr(3));
}

std::string Response::StatusLine() const {
  std::string text = statusText_.empty() ? std::string(ReasonOf(status_)) : statusText_;
  return std::to_string(status_) + (text.empty() ? "" : " " + text);
}

void Response::SetCodePage(int codePage) {
  if (!IsSupportedCodePage(codePage)) throw Error::InvalidCall();
  codePage_ = codePage;
}

void Response::SetExpires(int32_t minutes) {
  expiresMinutes_ = minutes;
  expires_ = Now() + minutes / 1440.0;
}

void Response::SetExpiresAbsolute(double date) {
  expiresMinutes_.reset();
  expires_ = date;
}

std::shared_ptr<ResponseCookie> Response::Cookie(std::string_view name) {
  for (const auto& c : cookies_)
    if (EqualsNoCase(c->Name(), name)) return c;
  cookies_.push_back(std::make_shared<ResponseCookie>(std::string(name)));
  return cookies_.back();
}

NameValues Response::ReplyHeaders() const {
  NameValues out = headers_;
  if (!redirect_.empty()) out.emplace_back("Location", redirect_);
  if (expires_) out.emplace_back("Expires", HttpDate(*expires_));
  if (!cacheControl_.empty()) out.emplace_back("Cache-Control", cacheControl_);
  for (const auto& c : cookies_) out.emplace_back("Set-Cookie", c->SetCookieHeader(codePage_));
  return out;
}

std::string Response::ReplyContentType() const {
  std::string type = contentType_.empty() ? "text/html" : contentType_;
  if (LCase(type).rfind("text/", 0) == 0 && LCase(type).find("charset") == std::string::npos)
    type += "; charset=" + (charset_.empty() ? CharsetName(codePage_) : charset_);
  return type;
}

std::string Response::ReplyBody() const { return EncodeCodePage(Output(), codePage_) + binary_; }

void ResponseCookie::SetValue(std::string value) {
  value_ = std::move(value);
  keys_.clear();
}

std::string ResponseCookie::Value() const {
  if (keys_.empty()) return value_;
  std::string joined;
  for (const auto& [k, v] : keys_) joined += (joined.empty() ? "" : "&") + k + "=" + v;
  return joined;
}

void ResponseCookie::SetKey(std::string_view key, std::string value) {
  value_.clear();
  for (auto& [k, v] : keys_)
    if (EqualsNoCase(k, key)) {
      v = std::move(value);
      return;
    }
  keys_.emplace_back(std::string(key), std::move(value));
}

Variant ResponseCookie::Key(std::string_view key) const {
  for (const auto& [k, v] : keys_)
    if (EqualsNoCase(k, key)) return Variant(v);
  return Variant();
}

std::string ResponseCookie::SetCookieHeader(int codePage) const {
  std::string value;
  if (keys_.empty()) {
    value = UrlEncode(value_, codePage);
  } else {
    for (const auto& [k, v] : keys_)
      value += (value.empty() ? "" : "&") + UrlEncode(k, codePage) + "=" + UrlEncode(v, codePage);
  }
  std::string header = UrlEncode(name_, codePage) + "=" + value;
  if (expires) header += "; expires=" + HttpDate(*expires);
  if (!domain.empty()) header += "; domain=" + domain;
  if (!path.empty()) header += "; path=" + path;
  if (secure) header += "; secure";
  if (httpOnly) header += "; HttpOnly";
  return header;
}

std::string HttpDate(double localDate) {
  std::tm tm{};
  tm.tm_year = Year(localDate) - 1900;
  tm.tm_mon = Month(localDate) - 1;
  tm.tm_mday = Day(localDate);
  tm.tm_hour = Hour(localDate);
  tm.tm_min = Minute(localDate);
  tm.tm_sec = Second(localDate);
  tm.tm_isdst = -1;
  std::time_t t = std::mktime(&tm);
  std::tm utc{};
  gmtime_r(&t, &utc);
  char buf[64];
  std::strftime(buf, sizeof buf, "%a, %d %b %Y %H:%M:%S GMT", &utc);
  return buf;
}

}  // namespace corvane::host
