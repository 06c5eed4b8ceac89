#include "cross_site.h"

#include <array>

#include "corvane/text.h"

namespace corvane::server {

namespace {

// The actions of the site's pages and the table component that write (a GET that names one of them
// is as much a write as a POST).
constexpr std::array<std::string_view, 9> kWriteActions = {"delete", "insert2", "update2", "setcol2", "del",
                                                           "rename", "add",     "save",    "remove"};

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string FormDecode(std::string_view s) {
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '+') {
      out += ' ';
    } else if (s[i] == '%' && i + 2 < s.size() && HexDigit(s[i + 1]) >= 0 && HexDigit(s[i + 2]) >= 0) {
      out += static_cast<char>(HexDigit(s[i + 1]) * 16 + HexDigit(s[i + 2]));
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

// "http://host:port/path" -> "host:port" (lower case); "" when it is not such a URL.
std::string HostOf(std::string_view url) {
  size_t scheme = url.find("://");
  if (scheme == std::string_view::npos) return "";
  url.remove_prefix(scheme + 3);
  size_t end = url.find_first_of("/?#");
  if (end != std::string_view::npos) url = url.substr(0, end);
  size_t at = url.rfind('@');
  if (at != std::string_view::npos) url.remove_prefix(at + 1);
  return LCase(std::string(url));
}

}  // namespace

bool IsWriteRequest(std::string_view method, std::string_view query) {
  if (method != "GET" && method != "HEAD") return true;
  size_t pos = 0;
  while (pos <= query.size()) {
    size_t end = query.find('&', pos);
    if (end == std::string_view::npos) end = query.size();
    std::string_view part = query.substr(pos, end - pos);
    pos = end + 1;
    size_t eq = part.find('=');
    if (eq == std::string_view::npos) continue;
    std::string name = LCase(FormDecode(part.substr(0, eq)));
    if (name != "action" && name != "ac") continue;
    std::string value = LCase(Trim(FormDecode(part.substr(eq + 1))));
    for (std::string_view w : kWriteActions)
      if (value == w) return true;
  }
  return false;
}

bool IsCrossSite(const std::function<std::string(std::string_view)>& header) {
  std::string fetchSite = LCase(header("Sec-Fetch-Site"));
  if (!fetchSite.empty()) return fetchSite != "same-origin" && fetchSite != "none";
  std::string host = LCase(header("Host"));
  std::string origin = header("Origin");
  if (!origin.empty()) return origin == "null" || HostOf(origin) != host;
  std::string referer = header("Referer");
  if (!referer.empty()) return HostOf(referer) != host;
  return false;
}

}  // namespace corvane::server
