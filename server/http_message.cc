#include "http_message.h"

#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::server {

std::string HttpRequest::Header(std::string_view name) const {
  for (const auto& [n, value] : headers)
    if (EqualsNoCase(n, name)) return value;
  return "";
}

void HttpReply::Set(std::string_view name, std::string value) {
  for (auto& [n, v] : headers)
    if (EqualsNoCase(n, name)) {
      v = std::move(value);
      return;
    }
  headers.emplace_back(std::string(name), std::move(value));
}

std::string HttpReply::Get(std::string_view name) const {
  for (const auto& [n, v] : headers)
    if (EqualsNoCase(n, name)) return v;
  return "";
}

void HttpReply::SetContent(std::string content, std::string contentType) {
  body = std::move(content);
  if (!contentType.empty()) Set("Content-Type", std::move(contentType));
}

bool SplitTarget(std::string_view target, std::string& path, std::string& query) {
  if (size_t scheme = target.find("://"); scheme != std::string_view::npos && target.front() != '/') {
    size_t slash = target.find('/', scheme + 3);
    target = slash == std::string_view::npos ? "/" : target.substr(slash);
  }
  if (target.empty() || target.front() != '/') return false;
  size_t q = target.find('?');
  std::string_view rawPath = target.substr(0, q);
  query = q == std::string_view::npos ? "" : std::string(target.substr(q + 1));
  if (size_t hash = query.find('#'); hash != std::string::npos) query.erase(hash);
  std::optional<std::string> decoded = host::DecodeUrlPath(rawPath);
  if (!decoded) return false;
  path = std::move(*decoded);
  return true;
}

std::string_view ReasonOf(int status) {
  switch (status) {
    case 200: return "OK";
    case 206: return "Partial Content";
    case 302: return "Found";
    case 304: return "Not Modified";
    case 400: return "Bad Request";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 408: return "Request Timeout";
    case 413: return "Payload Too Large";
    case 416: return "Range Not Satisfiable";
    case 431: return "Request Header Fields Too Large";
    case 500: return "Internal Server Error";
    case 501: return "Not Implemented";
    case 503: return "Service Unavailable";
    default: return "";
  }
}

HttpReply StatusPage(int status, std::string_view title, std::string_view message) {
  if (title.empty()) title = ReasonOf(status);
  HttpReply reply;
  reply.status = status;
  std::string body =
      "<html><body><h2>" + std::to_string(status) + (title.empty() ? "" : " ") + std::string(title) + "</h2>";
  if (!message.empty()) body += "<p>" + host::HtmlEncode(message) + "</p>";
  reply.SetContent(body + "</body></html>", "text/html; charset=utf-8");
  return reply;
}

}  // namespace corvane::server
