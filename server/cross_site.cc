#include "cross_site.h"

#include <array>

#include "corvane/codepage.h"
#include "corvane/host.h"
#include "corvane/text.h"

namespace corvane::server {

namespace {

// The actions of the site's pages and the table component that write (a GET that names one of them
// is as much a write as a POST).
constexpr std::array<std::string_view, 9> kWriteActions = {"delete", "insert2", "update2", "setcol2", "del",
                                                           "rename", "add",     "save",    "remove"};

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
  // The words are ASCII: any code page decodes them alike.
  const host::ValueCollection values = host::ParseUrlEncoded(query, kCodePageUtf8);
  for (const auto& [name, value] : values.Items()) {
    const std::string n = LCase(name);
    if (n != "action" && n != "ac") continue;
    const std::string v = LCase(Trim(value));
    for (std::string_view w : kWriteActions)
      if (v == w) return true;
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
