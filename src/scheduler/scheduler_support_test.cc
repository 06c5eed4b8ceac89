#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "scheduler/day_slots.h"
#include "scheduler/scheduler_support.h"

namespace corvane::scheduling {
namespace {

TEST(LocationClass, ChosenByTheTypeIdWithOfficeForTheRest) {
  EXPECT_EQ(LocationClass(Variant(2)), "Beijing");
  EXPECT_EQ(LocationClass(Variant(int16_t{3})), "Outside");
  EXPECT_EQ(LocationClass(Variant(4.0)), "Aboad");
  for (const Variant& other : {Variant(1), Variant(5), Variant(0), Variant::Null(), Variant()})
    EXPECT_EQ(LocationClass(other), "Office") << DebugString(other);
}

struct WholeCase {
  Variant a, b;
  bool equal, differ;
};

TEST(WholeNumbers, FloorsBothSidesAndNullMakesBothTestsFalse) {
  const WholeCase cases[] = {
      {Variant(1), Variant(1), true, false},
      {Variant(1), Variant("1"), true, false},   // a numeric text counts by its number
      {Variant(1.7), Variant(1), true, false},   // Int floors: 1.7 -> 1
      {Variant(1.5), Variant(2), false, true},   // CInt would make these equal
      {Variant(-0.5), Variant(-1), true, false}, // towards minus infinity
      {Variant(), Variant(0), true, false},      // Empty is 0
      {Variant::Null(), Variant(1), false, false},
      {Variant(3), Variant::Null(), false, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(WholeNumbersEqual(c.a, c.b), c.equal) << DebugString(c.a) << " " << DebugString(c.b);
    EXPECT_EQ(WholeNumbersDiffer(c.a, c.b), c.differ) << DebugString(c.a) << " " << DebugString(c.b);
  }
}

TEST(WholeNumbers, NonNumericTextRaisesTypeMismatch) {
  for (const Variant& bad : {Variant("abc"), Variant("")}) {
    try {
      WholeNumbersDiffer(Variant(1), bad);
      ADD_FAILURE();
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 13);
    }
    // The other side is converted too, even when the first is Null.
    EXPECT_THROW(WholeNumbersEqual(Variant::Null(), bad), Error);
  }
}

// Real dates never get there: the slots are keyed by day of month.
TEST(DaySlots, AnIndexOutsideTheThirtyTwoSlotsRaisesNine) {
  DaySlots slots;
  for (int bad : {32, 40, -1}) {
    try {
      slots.AddPlan(bad, Variant("a"), Variant("b"), Variant(1));
      ADD_FAILURE() << bad;
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 9);
    }
    EXPECT_THROW(slots.CellClass(bad), Error);
  }
  EXPECT_NO_THROW(slots.AddPlan(0, Variant("a"), Variant("b"), Variant(1)));
}

}  // namespace
}  // namespace corvane::scheduling
