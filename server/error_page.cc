#include "error_page.h"

#include <cstdio>

#include "corvane/host.h"

namespace corvane::server {

using host::HtmlEncode;

std::string ErrorCode(int32_t number) {
  // Run-time errors of the script engine are reported in its facility (0x800A....); numbers that are
  // already full error codes (negative as 32-bit values) are shown as they are.
  uint32_t code =
      number < 0 ? static_cast<uint32_t>(number) : 0x800A0000u | (static_cast<uint32_t>(number) & 0xFFFF);
  char buf[16];
  std::snprintf(buf, sizeof buf, "%08x", code);
  return buf;
}

std::string ErrorPageHtml(int32_t number, std::string_view description, std::string_view page,
                          const std::vector<std::string>& secrets) {
  std::string text(description);
  for (const std::string& secret : secrets) {
    if (secret.empty()) continue;
    for (size_t at; (at = text.find(secret)) != std::string::npos;) text.replace(at, secret.size(), "…");
  }
  std::string html =
      "<!DOCTYPE html>\r\n<html><head><title>页面错误</title>"
      "<style>body{font-family:sans-serif;margin:2em}.err{border:1px solid #c33;padding:1em;"
      "background:#fff4f4}code{font-size:1.1em}</style></head>\r\n<body><div class=err>"
      "<h2>页面错误 (page error)</h2>\r\n<p>错误 <code>'" +
      ErrorCode(number) + "'</code> (" + std::to_string(number) + ")</p>\r\n<p class=description>" +
      HtmlEncode(text) + "</p>\r\n<p class=page>" + HtmlEncode(page) + "</p></div></body></html>\r\n";
  return html;
}

}  // namespace corvane::server
