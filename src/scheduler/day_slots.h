// The day accumulators of the range views: 32 slots indexed by day of month (slot 0 is never used),
// one for the text of the plans on that day, one for the location type id of the last plan that
// touched it. Slots are keyed by day of month only, so a plan that runs outside the shown range
// writes to the slots of days with the same number; that is how the views have always behaved.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "corvane/variant.h"

namespace corvane::scheduling {

class DaySlots {
 public:
  static constexpr int kSlots = 32;

  // Appends "<type name>:<location name>||" to the day's text and makes `type1ID` the day's type.
  // A day outside 0..31 raises 9 (subscript out of range).
  void AddPlan(int day, const Variant& type1, const Variant& type2, const Variant& type1ID);

  // The day's cell class: "sch" followed by its type id ("sch" alone for a day without plans).
  std::string CellClass(int day) const;
  // The day's text with every "||" replaced by `lineBreak`.
  std::string PlanText(int day, std::string_view lineBreak) const;

  const Variant& Text(int day) const { return text_[Index(day)]; }
  const Variant& TypeID(int day) const { return type_[Index(day)]; }

 private:
  static size_t Index(int day);
  std::array<Variant, kSlots> text_;
  std::array<Variant, kSlots> type_;
};

}  // namespace corvane::scheduling
