#include "error_page.h"

#include <cstdio>

#include "corvane/host.h"
#include "corvane/script.h"

namespace corvane::server {

using host::HtmlEncode;

namespace {

std::string Blank(std::string text, const std::vector<std::string>& secrets) {
  for (const std::string& secret : secrets) {
    if (secret.empty()) continue;
    for (size_t at; (at = text.find(secret)) != std::string::npos;) text.replace(at, secret.size(), "…");
  }
  return text;
}

// "/inc/a.inc, line 3, column 5"; "" when the place is unknown.
std::string PlaceOf(const ErrorReport& r) {
  if (r.file.empty() && r.line == 0) return "";
  std::string place = r.file.empty() ? r.page : r.file;
  if (r.line > 0) place += ", line " + std::to_string(r.line);
  if (r.column > 0) place += ", column " + std::to_string(r.column);
  return place;
}

}  // namespace

std::string ErrorCode(int32_t number) {
  // Run-time errors of the script engine are reported in its facility (0x800A....); numbers that are
  // already full error codes (negative as 32-bit values) are shown as they are.
  uint32_t code =
      number < 0 ? static_cast<uint32_t>(number) : 0x800A0000u | (static_cast<uint32_t>(number) & 0xFFFF);
  char buf[16];
  std::snprintf(buf, sizeof buf, "%08x", code);
  return buf;
}

ErrorReport ReportOf(const Error& e, std::string_view page) {
  ErrorReport r{.number = e.Number(), .description = e.Description(), .page = std::string(page)};
  if (const auto* s = dynamic_cast<const script::ScriptError*>(&e)) {
    r.file = s->Where().file;
    r.line = s->Where().line;
    r.column = s->Where().column;
    r.sourceLine = s->SourceLine();
    r.compileError = s->IsCompileError();
  }
  return r;
}

std::string ErrorPageHtml(const ErrorReport& r, const std::vector<std::string>& secrets) {
  std::string kind = r.compileError ? "编译错误 (compilation error)" : "页面错误 (page error)";
  std::string html =
      "<!DOCTYPE html>\r\n<html><head><title>页面错误</title>"
      "<style>body{font-family:sans-serif;margin:2em}.err{border:1px solid #c33;padding:1em;"
      "background:#fff4f4}code{font-size:1.1em}pre{background:#fff;padding:.5em}</style></head>\r\n"
      "<body><div class=err><h2>" +
      kind + "</h2>\r\n<p>错误 <code>'" + ErrorCode(r.number) + "'</code> (" + std::to_string(r.number) +
      ")</p>\r\n<p class=description>" + HtmlEncode(Blank(r.description, secrets)) +
      "</p>\r\n<p class=page>" + HtmlEncode(Blank(r.page, secrets)) + "</p>";
  if (std::string place = PlaceOf(r); !place.empty())
    html += "\r\n<p class=place>" + HtmlEncode(Blank(place, secrets)) + "</p>";
  if (!r.sourceLine.empty()) {
    html += "\r\n<pre class=source>" + HtmlEncode(Blank(r.sourceLine, secrets));
    if (r.column > 0) html += "\r\n" + std::string(static_cast<size_t>(r.column - 1), '-') + "^";
    html += "</pre>";
  }
  return html + "</div></body></html>\r\n";
}

std::string ErrorPageHtml(int32_t number, std::string_view description, std::string_view page,
                          const std::vector<std::string>& secrets) {
  return ErrorPageHtml(
      ErrorReport{.number = number, .description = std::string(description), .page = std::string(page)},
      secrets);
}

std::string ErrorLogLine(const ErrorReport& r, const std::vector<std::string>& secrets) {
  std::string line = "corvane-server: " + r.page + ": error " + ErrorCode(r.number) + " (" +
                     std::to_string(r.number) + ") " + r.description;
  if (std::string place = PlaceOf(r); !place.empty()) line += " at " + place;
  if (!r.sourceLine.empty()) line += ": " + r.sourceLine;
  return EscapeForLog(Blank(line, secrets));
}

std::string EscapeForLog(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (unsigned char c : text) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c == '\\') {
      out += "\\\\";
    } else if (c < 0x20 || c == 0x7f) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\x%02x", c);
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

}  // namespace corvane::server
