#include "script/date_literal.h"

#include <vector>

#include "corvane/dates.h"
#include "corvane/text.h"

namespace corvane::script {

namespace {

struct Reader {
  std::string_view s;
  size_t i = 0;
  void Blanks() {
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
  }
  bool AtEnd() const { return i >= s.size(); }
  // Up to `max` digits; -1 when there is none.
  int Digits(int max, int* count = nullptr) {
    int value = 0, n = 0;
    while (i < s.size() && n < max && s[i] >= '0' && s[i] <= '9') value = value * 10 + (s[i++] - '0'), ++n;
    if (count) *count = n;
    return n ? value : -1;
  }
  bool Take(char c) {
    if (i < s.size() && s[i] == c) return ++i, true;
    return false;
  }
};

bool ValidDate(int y, int m, int d) {
  if (m < 1 || m > 12 || d < 1 || y < 100 || y > 9999) return false;
  return Month(DateSerial(y, m, d)) == m;
}

}  // namespace

std::optional<double> ParseDateLiteral(std::string_view text) {
  Reader r{text};
  r.Blanks();
  bool hasDate = false;
  int year = 1899, month = 12, day = 30;
  size_t mark = r.i;
  int n1 = 0;
  int a = r.Digits(4, &n1);
  if (a >= 0 && (r.Take('-') || r.Take('/'))) {
    char sep = text[r.i - 1];
    int b = r.Digits(2);
    if (b < 0 || !r.Take(sep)) return std::nullopt;
    int n3 = 0;
    int c = r.Digits(4, &n3);
    if (c < 0) return std::nullopt;
    if (n1 == 4) {  // y-m-d
      year = a, month = b, day = c;
    } else {  // m/d/y
      month = a, day = b, year = c;
      if (n3 <= 2) year += year < 30 ? 2000 : 1900;
    }
    if (!ValidDate(year, month, day)) return std::nullopt;
    hasDate = true;
    r.Blanks();
  } else {
    r.i = mark;
  }
  int hour = 0, minute = 0, second = 0;
  bool hasTime = false;
  if (!r.AtEnd()) {
    hour = r.Digits(2);
    if (hour < 0 || !r.Take(':')) return std::nullopt;
    minute = r.Digits(2);
    if (minute < 0) return std::nullopt;
    if (r.Take(':')) {
      second = r.Digits(2);
      if (second < 0) return std::nullopt;
    }
    r.Blanks();
    if (!r.AtEnd()) {
      std::string_view rest = text.substr(r.i);
      while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t')) rest.remove_suffix(1);
      bool pm = EqualsNoCase(rest, "pm") || EqualsNoCase(rest, "p");
      bool am = EqualsNoCase(rest, "am") || EqualsNoCase(rest, "a");
      if ((!pm && !am) || hour < 1 || hour > 12) return std::nullopt;
      if (pm && hour < 12) hour += 12;
      if (am && hour == 12) hour = 0;
    }
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    hasTime = true;
  }
  if (!hasDate && !hasTime) return std::nullopt;
  return DateTimeSerial(year, month, day, hour, minute, second);
}

}  // namespace corvane::script
