#include "scheduler/day_slots.h"

#include "corvane/error.h"
#include "corvane/text.h"

namespace corvane::scheduling {

size_t DaySlots::Index(int day) {
  if (day < 0 || day >= kSlots) throw Error::SubscriptOutOfRange();
  return static_cast<size_t>(day);
}

void DaySlots::AddPlan(int day, const Variant& type1, const Variant& type2, const Variant& type1ID) {
  size_t i = Index(day);
  text_[i] = Variant(text_[i].Text() + Trim(type1.Text()) + ":" + Trim(type2.Text()) + "||");
  type_[i] = type1ID;
}

std::string DaySlots::CellClass(int day) const { return "sch" + TypeID(day).Text(); }

std::string DaySlots::PlanText(int day, std::string_view lineBreak) const {
  return Replace(Text(day).Text(), "||", lineBreak);
}

}  // namespace corvane::scheduling
