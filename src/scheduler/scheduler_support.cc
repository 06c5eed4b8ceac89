#include "scheduler/scheduler_support.h"

#include <cmath>
#include <optional>
#include <vector>

#include "corvane/dates.h"
#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::scheduling {

std::string LocationClass(const Variant& type1ID) {
  if (EqualsLiteral(type1ID, 2)) return "Beijing";
  if (EqualsLiteral(type1ID, 3)) return "Outside";
  if (EqualsLiteral(type1ID, 4)) return "Aboad";
  return "Office";
}

std::string WeekdayName(double date) {
  static const std::vector<std::string> names = Split("日,一,二,三,四,五,六", ",");
  return names.at(static_cast<size_t>(Weekday(date) - 1));
}

MonthDays MonthOf(double date) {
  double first = DateSerial(Year(date), Month(date), 1);
  double last = AddDays(first, 30);
  while (Month(last) > Month(date)) last = AddDays(last, -1);
  return {first, last};
}

namespace {

// Int(v): the floor of v's number form; nullopt for Null, which Int passes through.
std::optional<double> WholePart(const Variant& v) {
  if (v.IsNull()) return std::nullopt;
  return std::floor(v.ToDouble());
}

}  // namespace

bool WholeNumbersEqual(const Variant& a, const Variant& b) {
  auto x = WholePart(a);
  auto y = WholePart(b);
  return x && y && *x == *y;
}

bool WholeNumbersDiffer(const Variant& a, const Variant& b) {
  auto x = WholePart(a);
  auto y = WholePart(b);
  return x && y && *x != *y;
}

}  // namespace corvane::scheduling
