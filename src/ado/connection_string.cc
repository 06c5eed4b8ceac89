#include "ado/connection_string.h"

#include "corvane/text.h"

namespace corvane::ado::detail {

namespace {

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

}  // namespace

ConnectionString ConnectionString::Parse(std::string_view text) {
  ConnectionString result;
  if (text.find('=') == std::string_view::npos) {
    result.barePath_ = std::string(TrimBlanks(text));
    return result;
  }
  size_t i = 0;
  while (i < text.size()) {
    size_t eq = text.find('=', i), semi = text.find(';', i);
    if (eq == std::string_view::npos || (semi != std::string_view::npos && semi < eq)) {
      // A part without "=" carries no setting.
      if (semi == std::string_view::npos) break;
      i = semi + 1;
      continue;
    }
    std::string key = LCase(TrimBlanks(text.substr(i, eq - i)));
    size_t j = eq + 1;
    while (j < text.size() && (text[j] == ' ' || text[j] == '\t')) ++j;
    std::string value;
    // A value in ODBC's braces (up to the closing brace, ";" included) or in quotes; the closing
    // character doubled stands for itself.
    const char open = j < text.size() ? text[j] : '\0';
    if (open == '{' || open == '"' || open == '\'') {
      const char close = open == '{' ? '}' : open;
      for (++j; j < text.size(); ++j) {
        if (text[j] == close) {
          if (j + 1 < text.size() && text[j + 1] == close) {
            value += close;
            ++j;
            continue;
          }
          ++j;
          break;
        }
        value += text[j];
      }
      size_t end = text.find(';', j);
      i = end == std::string_view::npos ? text.size() : end + 1;
    } else {
      size_t end = text.find(';', j);
      if (end == std::string_view::npos) end = text.size();
      value = std::string(TrimBlanks(text.substr(j, end - j)));
      i = end + 1;
    }
    if (!key.empty()) result.entries_.emplace_back(std::move(key), std::move(value));
  }
  return result;
}

std::optional<std::string> ConnectionString::Get(std::string_view key) const {
  std::string wanted = LCase(key);
  for (auto it = entries_.rbegin(); it != entries_.rend(); ++it)
    if (it->first == wanted) return it->second;
  return std::nullopt;
}

}  // namespace corvane::ado::detail
