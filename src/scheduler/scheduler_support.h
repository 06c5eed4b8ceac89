// Small pieces the scheduler's views share: the plan query's select list, the weekday names, the
// location class of a plan and the whole-number comparison of person ids.
#pragma once

#include <string>
#include <string_view>

#include "corvane/variant.h"
#include "page_kit/page_kit.h"

namespace corvane::scheduling {

using page_kit::kCrLf;

// The select list and joins shared by every plan query; the caller appends the person's id and the
// date conditions. The "alias=expr" items are SQL Server's form; the data layer adapts them.
inline constexpr std::string_view kPlanQueryHead =
    "select planID,planStartTime,planEndTime,Type1ID=personPlan.planAddrTypeID,"
    "Type1=planAddrType.planAddrTypeName,Type2=planAddr.planAddrName,planAddrDetail,planTypeID,"
    "planContent,planAddition,planFlagID from personPlan,planAddrType,planAddr where "
    "personPlan.planAddrTypeID=planAddrType.planAddrTypeID and "
    "personPlan.planAddrID=planAddr.planAddrID and personID=";

// The CSS class of a plan's location type: 2 "Beijing", 3 "Outside", 4 "Aboad" (spelled so on
// purpose), anything else, Null included, "Office".
std::string LocationClass(const Variant& type1ID);

// The short weekday name of a date ("日" for Sunday, "一" for Monday, ... "六").
std::string WeekdayName(double date);

// Int(a) = Int(b) and Int(a) <> Int(b) as an If test sees them: each side is floored; a Null on
// either side makes both tests false; a value with no number form (non-numeric text) raises 13.
bool WholeNumbersEqual(const Variant& a, const Variant& b);
bool WholeNumbersDiffer(const Variant& a, const Variant& b);

// The date a Variant stands for (CDate); text is parsed as the locale's date text.
inline double AsDate(const Variant& v) { return v.ToDate(); }
inline Variant DateVariant(double serial) { return Variant::FromDate(serial); }

// The days of `date`'s month: first is the 1st at midnight; last is found by stepping back from the
// 1st plus 30 days while that is in a later month number.
struct MonthDays {
  double first;
  double last;
};
MonthDays MonthOf(double date);

}  // namespace corvane::scheduling
