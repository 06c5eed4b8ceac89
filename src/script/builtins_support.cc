#include "script/builtins_support.h"

#include <cmath>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::script::builtins {
namespace {

// Reads 1 to `maxDigits` digits at text[pos].
bool ReadDigits(std::string_view text, size_t& pos, size_t maxDigits, int& value) {
  size_t n = 0;
  value = 0;
  while (pos < text.size() && n < maxDigits && text[pos] >= '0' && text[pos] <= '9') {
    value = value * 10 + (text[pos++] - '0');
    ++n;
  }
  return n > 0;
}

bool Skip(std::string_view text, size_t& pos, std::string_view what) {
  if (text.substr(pos, what.size()) != what) return false;
  pos += what.size();
  return true;
}

// "h:mm[:ss]" with an optional " AM" / " PM" (then the hour is 1 to 12), to the end of the text:
// the time as a fraction of a day.
std::optional<double> ReadTime(std::string_view text, size_t pos) {
  int hour, minute, second = 0;
  if (!ReadDigits(text, pos, 2, hour) || !Skip(text, pos, ":")) return std::nullopt;
  const size_t minuteAt = pos;
  if (!ReadDigits(text, pos, 2, minute) || pos - minuteAt != 2) return std::nullopt;
  if (Skip(text, pos, ":")) {
    const size_t secondAt = pos;
    if (!ReadDigits(text, pos, 2, second) || pos - secondAt != 2) return std::nullopt;
  }
  if (pos < text.size()) {
    std::string_view rest = text.substr(pos);
    if (rest.size() != 3 || rest[0] != ' ') return std::nullopt;
    const std::string marker = FoldCase(rest.substr(1));
    if ((marker != "am" && marker != "pm") || hour < 1 || hour > 12) return std::nullopt;
    hour = hour % 12 + (marker == "pm" ? 12 : 0);
  }
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return TimeSerial(hour, minute, second);
}

// "yyyy年m月d日", optionally followed by a blank and a time.
std::optional<double> ReadLongDate(std::string_view text) {
  size_t pos = 0;
  int year, month, day;
  if (!ReadDigits(text, pos, 4, year) || pos != 4 || !Skip(text, pos, "年") ||
      !ReadDigits(text, pos, 2, month) || !Skip(text, pos, "月") || !ReadDigits(text, pos, 2, day) ||
      !Skip(text, pos, "日"))
    return std::nullopt;
  if (month < 1 || month > 12 || day < 1 || Month(DateSerial(year, month, day)) != month) return std::nullopt;
  const double date = DateSerial(year, month, day);
  if (pos == text.size()) return date;
  if (!Skip(text, pos, " ")) return std::nullopt;
  const std::optional<double> time = ReadTime(text, pos);
  if (!time) return std::nullopt;
  return DateTimeSerial(year, month, day, Hour(*time), Minute(*time), Second(*time));
}

}  // namespace

const Variant& Arg(const Args& args, size_t i) {
  static const Variant kEmpty;
  return i < args.size() ? args[i] : kEmpty;
}

size_t GivenCount(const Args& args) {
  size_t n = args.size();
  while (n > 0 && args[n - 1].IsMissing()) --n;
  return n;
}

int32_t LongArg(const Args& args, size_t i, int32_t fallback) {
  if (!Given(args, i)) return fallback;
  return args[i].ToLong();
}

double DoubleArg(const Args& args, size_t i) { return Arg(args, i).ToDouble(); }

std::string TextArg(const Args& args, size_t i) { return Arg(args, i).ToString(); }

bool TextCompareArg(const Args& args, size_t i) {
  const int32_t compare = LongArg(args, i, 0);
  if (compare < 0 || compare > 2) throw Error::InvalidCall();
  return compare != 0;
}

std::string FoldCase(std::string_view s) { return LCase(s); }

std::optional<double> ReadDate(const Variant& v) {
  if (v.IsNull()) return std::nullopt;
  if (v.IsDate() || v.IsNumber() || v.IsEmpty()) return v.ToDouble();
  const std::string* s = v.StringPtr();
  if (!s) return std::nullopt;
  const std::string text = Trim(*s);
  if (auto d = ParseDateText(text)) return d;
  if (auto d = ReadLongDate(text)) return d;
  return ReadTime(text, 0);
}

double DateArg(const Args& args, size_t i) {
  const Variant& v = Arg(args, i);
  if (v.IsNull()) throw Error::InvalidUseOfNull();
  if (auto d = ReadDate(v)) return *d;
  throw Error::TypeMismatch();
}

Variant CheckedDate(double serial) {
  if (!(serial >= kMinDate && serial <= kMaxDate)) throw Error::InvalidCall();
  return Variant::FromDate(serial);
}

}  // namespace corvane::script::builtins
