#include "http_access_log.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace corvane::server {

namespace {

// `text` in double quotes, with quotes and backslashes escaped by a backslash, and control bytes (and,
// with `escapeHigh`, bytes from 0x80 up) written through `format` with the byte's value.
std::string EscapedInQuotes(std::string_view text, bool escapeHigh, const char* format) {
  std::string out = "\"";
  for (unsigned char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7f || (escapeHigh && c >= 0x80)) {
      char buf[8];
      std::snprintf(buf, sizeof buf, format, c);
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + '"';
}

// A client's text inside a quoted field of the combined format: control bytes as "\x0d"; "-" when
// empty.
std::string Quoted(std::string_view text) {
  if (text.empty()) return "\"-\"";
  return EscapedInQuotes(text, false, "\\x%02x");
}

// A JSON string; bytes from 0x80 up are written as the code points of the same number, so that the
// line stays valid JSON whatever the client sent.
std::string JsonString(std::string_view text) { return EscapedInQuotes(text, true, "\\u%04x"); }

// Lines come many a second: each thread keeps the text of the last second it wrote.
std::string TimeText(std::time_t when, const char* format) {
  thread_local std::time_t keptWhen = -1;
  thread_local const char* keptFormat = nullptr;
  thread_local std::string kept;
  if (when == keptWhen && format == keptFormat) return kept;
  std::tm tm{};
  localtime_r(&when, &tm);
  char buf[64];
  std::strftime(buf, sizeof buf, format, &tm);
  keptWhen = when, keptFormat = format, kept = buf;
  return kept;
}

// "0.001234": seconds with six decimals.
std::string Seconds(std::chrono::microseconds took) {
  const auto us = static_cast<unsigned long long>(std::max<int64_t>(took.count(), 0));
  char buf[32];
  std::snprintf(buf, sizeof buf, "%llu.%06llu", us / 1000000, us % 1000000);
  return buf;
}

}  // namespace

std::string CombinedLogLine(const AccessRecord& r) {
  std::string requestLine;
  if (!r.method.empty()) {
    requestLine = std::string(r.method) + " " + std::string(r.target);
    if (!r.version.empty()) requestLine += " " + std::string(r.version);
  }
  return std::string(r.remoteAddr.empty() ? "-" : r.remoteAddr) + " - - [" +
         TimeText(r.when, "%d/%b/%Y:%H:%M:%S %z") + "] " + Quoted(requestLine) + " " +
         std::to_string(r.status) + " " + std::to_string(r.bytes) + " " + Quoted(r.referer) + " " +
         Quoted(r.userAgent) + " " + Seconds(r.took);
}

std::string JsonLogLine(const AccessRecord& r) {
  return "{\"time\":" + JsonString(TimeText(r.when, "%Y-%m-%dT%H:%M:%S%z")) +
         ",\"remote\":" + JsonString(r.remoteAddr) + ",\"method\":" + JsonString(r.method) +
         ",\"target\":" + JsonString(r.target) + ",\"protocol\":" + JsonString(r.version) +
         ",\"status\":" + std::to_string(r.status) + ",\"bytes\":" + std::to_string(r.bytes) +
         ",\"referer\":" + JsonString(r.referer) + ",\"user_agent\":" + JsonString(r.userAgent) +
         ",\"seconds\":" + Seconds(r.took) + "}";
}

}  // namespace corvane::server
