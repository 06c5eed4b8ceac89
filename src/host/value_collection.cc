// Request.Form and Request.QueryString: urlencoded name/value pairs decoded in the page's code page.
#include <cctype>

#include "corvane/host.h"
#include "corvane/text.h"
#include "runtime/hex_digit.h"

namespace corvane::host {

void ValueCollection::Add(std::string name, std::string value) {
  items_.emplace_back(std::move(name), std::move(value));
}

Variant ValueCollection::Item(std::string_view name) const {
  const std::string* first = nullptr;
  std::string joined;
  for (const auto& [n, v] : items_) {
    if (!EqualsNoCase(n, name)) continue;
    if (!first) {
      first = &v;
    } else {
      if (joined.empty()) joined = *first;
      joined += ", ";
      joined += v;
    }
  }
  if (!first) return Variant();
  return joined.empty() ? Variant(*first) : Variant(std::move(joined));
}

std::vector<std::string> ValueCollection::Names() const {
  std::vector<std::string> names;
  for (const auto& [n, v] : items_) {
    bool seen = false;
    for (const std::string& m : names) seen = seen || EqualsNoCase(m, n);
    if (!seen) names.push_back(n);
  }
  return names;
}

namespace {

// "+" is a blank and "%XX" a byte; a "%" not followed by two hex digits stays as it is.
std::string PercentDecode(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size(); ++i) {
    char c = s[i];
    if (c == '+') {
      out += ' ';
    } else if (c == '%' && i + 2 < s.size() && HexDigitValue(s[i + 1]) >= 0 && HexDigitValue(s[i + 2]) >= 0) {
      out += static_cast<char>(HexDigitValue(s[i + 1]) * 16 + HexDigitValue(s[i + 2]));
      i += 2;
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

std::optional<std::string> DecodeUrlPath(std::string_view path) {
  std::string out;
  out.reserve(path.size());
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i] != '%') {
      out += path[i];
      continue;
    }
    const int hi = i + 2 < path.size() ? HexDigitValue(path[i + 1]) : -1;
    const int lo = hi < 0 ? -1 : HexDigitValue(path[i + 2]);
    if (lo < 0) return std::nullopt;
    out += static_cast<char>(hi * 16 + lo);
    i += 2;
  }
  return out;
}

ValueCollection ParseUrlEncoded(std::string_view text, int codePage) {
  ValueCollection out;
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t amp = text.find('&', pos);
    if (amp == std::string_view::npos) amp = text.size();
    std::string_view pair = text.substr(pos, amp - pos);
    if (!pair.empty()) {
      size_t eq = pair.find('=');
      std::string_view name = pair.substr(0, eq);
      std::string_view value = eq == std::string_view::npos ? std::string_view() : pair.substr(eq + 1);
      out.Add(DecodeCodePage(PercentDecode(name), codePage), DecodeCodePage(PercentDecode(value), codePage));
    }
    pos = amp + 1;
  }
  return out;
}

ValueCollection ParseCookies(std::string_view header, int codePage) {
  ValueCollection out;
  for (const std::string& part : Split(header, ";")) {
    std::string pair = Trim(part);
    if (pair.empty()) continue;
    size_t eq = pair.find('=');
    std::string name = Trim(std::string_view(pair).substr(0, eq));
    std::string value = eq == std::string::npos ? "" : pair.substr(eq + 1);
    out.Add(DecodeCodePage(PercentDecode(name), codePage), DecodeCodePage(PercentDecode(value), codePage));
  }
  return out;
}

std::string UrlEncode(std::string_view text, int codePage) {
  static const char* hex = "0123456789ABCDEF";
  std::string bytes = EncodeCodePage(text, codePage);
  std::string out;
  for (unsigned char c : bytes) {
    if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '*') {
      out += static_cast<char>(c);
    } else if (c == ' ') {
      out += '+';
    } else {
      out += '%';
      out += hex[c >> 4];
      out += hex[c & 15];
    }
  }
  return out;
}

}  // namespace corvane::host
