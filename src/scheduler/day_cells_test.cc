#include <gtest/gtest.h>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

class DayCells : public SchedulerTest {
 protected:
  void SetUp() override {
    SchedulerTest::SetUp();
    AddPlans(db, {
        {1, "2026-11-02 09:00:00", "2026-11-04 18:00:00", 2, 2, 1},  // public, 北京:海淀
        {1, "2026-11-03", "2026-11-03 17:00:00", 3, 3, 0},           // private, 外地:上海
        {1, "2026-11-01", "2026-11-05", 4, 4, 1},                    // public, 国外:东京
        {1, "2026-11-03 10:00:00", "2026-11-03 11:00:00", 5, 1, 1},  // starts after midnight
        {2, "2026-11-03", "2026-11-03", 1, 1, 1},                    // someone else's
    });
  }
};

// Each newer item wraps the ones before it, right after its own opening tag.
constexpr const char* kAllThree =
    "<span class=Outside style='width:100%;'> "
    "<span class=Beijing style='width:100%;'> "
    "<span class=Aboad style='width:100%;'> 1.国外:东京&nbsp;</span>||"
    "2.北京:海淀&nbsp;</span>||"
    "3.外地:上海&nbsp;</span>||";

TEST_F(DayCells, OwnDayShowsEveryPlanNestedInTheNewestSpan) {
  scheduler& s = Open();
  Variant dt("2026-11-03"), id(1);
  Variant r = s.GetPersonDay(dt, id);
  EXPECT_EQ(r.Type(), vtString);
  EXPECT_EQ(r.Text(), kAllThree);
  Variant asDate = Variant::Date(2026, 11, 3);
  EXPECT_EQ(s.GetPersonDay(asDate, id).Text(), kAllThree);
}

TEST_F(DayCells, SomeoneElsesDayShowsPublicPlansOnly) {
  session.Set("personID", Variant(2));
  scheduler& s = Open();
  Variant dt("2026-11-03"), id(1);
  EXPECT_EQ(s.GetPersonDay(dt, id).Text(),
            "<span class=Beijing style='width:100%;'> "
            "<span class=Aboad style='width:100%;'> 1.国外:东京&nbsp;</span>||"
            "2.北京:海淀&nbsp;</span>||");
}

TEST_F(DayCells, OwnershipComparesWholeNumbers) {
  Variant dt("2026-11-03");
  session.Set("personID", Variant("1"));  // a text id still counts as the number
  {
    scheduler& s = Open();
    Variant id(1);
    EXPECT_EQ(s.GetPersonDay(dt, id).Text(), kAllThree);
    page->End();
  }
  session.Set("personID", Variant(1.9));  // Int(1.9) = 1: the owner
  {
    scheduler& s = Open();
    Variant id(1);
    EXPECT_EQ(s.GetPersonDay(dt, id).Text(), kAllThree);
    page->End();
  }
  session.Set("personID", Variant(0.99));  // Int(0.99) = 0: not the owner (CInt would say 1)
  {
    scheduler& s = Open();
    Variant id(1);
    EXPECT_EQ(Count(s.GetPersonDay(dt, id).Text(), "</span>||"), 2u);
    page->End();
  }
  session.Set("personID", Variant("somebody"));
  {
    scheduler& s = Open();
    Variant id(1);
    try {
      s.GetPersonDay(dt, id);
      ADD_FAILURE();
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), 13);
    }
  }
}

TEST_F(DayCells, WithATimeThePlansRunningAtThatMomentMatch) {
  scheduler& s = Open();
  Variant at = Variant::Date(2026, 11, 3, 10, 30), id(1);
  EXPECT_EQ(Count(s.GetPersonDay(at, id).Text(), "</span>||"), 4u);
  EXPECT_NE(s.GetPersonDay(at, id).Text().find("4.其他:总部&nbsp;</span>||"), std::string::npos);
  EXPECT_NE(s.GetPersonDay(at, id).Text().find("<span class=Office style='width:100%;'> "),
            std::string::npos);
}

TEST_F(DayCells, TooltipMarkListsPublicPlansWithTheLastClass) {
  scheduler& s = Open();  // even the owner sees public plans only
  Variant dt("2026-11-03"), id(1);
  EXPECT_EQ(s.GetPersonDay2(dt, id).Text(),
            "<span class=Beijing title='1.国外:东京2.北京:海淀'>&nbsp;&nbsp;</span>");
  Variant empty("2026-12-25");
  EXPECT_EQ(s.GetPersonDay2(empty, id).Text(), "<span class= title=''>&nbsp;&nbsp;</span>");
  session.Set("personID", Variant("not a number"));  // the session is not read
  EXPECT_NO_THROW(s.GetPersonDay2(dt, id));
}

TEST(DayCellsWithoutConnection, FailAtTheDataLayer) {
  host::Session session;
  host::Page page(host::PageRequest{.url = "/p.asp"}, session, corvane::testing::LibraryHost());
  Object obj = page.Server().CreateObject("corvane.scheduler");
  Variant dt("2026-11-03"), id(1);
  EXPECT_THROW(obj.As<scheduler>()->GetPersonDay2(dt, id), Error);
}

}  // namespace
}  // namespace corvane::scheduling::testing
