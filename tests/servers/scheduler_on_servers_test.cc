// The scheduler's month views on every backend: the same company and plans as the SQLite tests
// (scheduler_fixture.h), in typed tables, give the pages of their golden files byte for byte.
#include <gtest/gtest.h>

#include <ctime>

#include "ado/data_layer_fixture.h"
#include "corvane/dates.h"
#include "scheduler/scheduler.h"

namespace corvane::testing {

class SchedulerOnEveryBackend : public ado::testing::DataLayerTest {
 protected:
  void Seed() override {
    Run({"create table planAddrType(planAddrTypeID int primary key, planAddrTypeName varchar(20))",
         "create table planAddr(planAddrID int primary key, planAddrName varchar(20))",
         "create table personPlan(planID integer primary key, planStartTime datetime, planEndTime datetime,"
         " planAddrTypeID int, planAddrID int, planAddrDetail varchar(50), planTypeID int, planContent "
         "varchar(200), planAddition varchar(200), planFlagID int, personID int)",
         "create table personDuty(dutyID int primary key, dutyName varchar(20))",
         "create table person(personID int primary key, personName varchar(20), dutyID int, systemID int)",
         "insert planAddrType(planAddrTypeID,planAddrTypeName) values (1,'本部'),(2,'北京'),(3,'外地'),"
         "(4,'  国外 '),(5,'其他')",
         "insert planAddr(planAddrID,planAddrName) values (1,'总部'),(2,'海淀'),(3,'上海'),(4,'东京')",
         "insert personDuty(dutyID,dutyName) values (1,'经理'),(2,'职员')",
         "insert person(personID,personName,dutyID,systemID) values (2,'李四',2,1),(1,'张三',1,1),"
         "(3,'王五',2,2),(4,'赵六',2,1)",
         "insert personPlan(planStartTime,planEndTime,planAddrTypeID,planAddrID,planFlagID,personID) values"
         " ('2026-10-30','2026-11-02',3,3,1,1), ('2026-11-01','2026-11-04',4,4,1,1),"
         " ('2026-11-02','2026-11-05',3,1,2,1), ('2026-11-03 09:00:00','2026-11-04 18:00:00',2,2,1,1),"
         " ('2026-11-04','2026-11-04 12:00:00',5,1,0,1), ('2026-11-05 08:00:00','2026-11-06 "
         "07:00:00',1,2,1,1),"
         " ('2026-11-04','2026-11-06',2,3,1,2), ('2026-11-02','2026-11-02',4,4,0,2)"});
    for (auto [key, value] :
         {std::pair{"personID", Variant(1)}, {"systemID", Variant(1)}, {"rnd", Variant("77")}})
      session.Set(key, value);
    SetClock([] {
      std::tm t{.tm_sec = 15, .tm_min = 30, .tm_hour = 8, .tm_mday = 2, .tm_year = 126, .tm_isdst = -1};
      return std::chrono::system_clock::from_time_t(std::mktime(&t));
    });
  }
  void TearDown() override {
    page.reset();
    SetClock(nullptr);
    DataLayerTest::TearDown();
  }
  const Object& Open() {
    page = std::make_unique<host::Page>(host::PageRequest{.url = "/scheduler/personMonth.asp"}, session,
                                        LibraryHost());
    obj = page->Server().CreateObject("corvane.scheduler");
    obj.Invoke("Init", {Variant(cs)});
    return obj;
  }

  host::Session session;
  std::unique_ptr<host::Page> page;
  Object obj;
};

TEST_P(SchedulerOnEveryBackend, PersonAndLeaderMonthsAsOnSqlite) {
  const Object& s = Open();
  EXPECT_EQ(s.Invoke("DispMonth", {Variant::Date(2026, 11, 18), Variant(1)}).Text(),
            Golden("src/scheduler/golden/month_grid.html"));
  EXPECT_EQ(s.Invoke("DispLeaderMonth", {Variant("2026-11-20"), Variant("person.personID<>4")}).Text(),
            Golden("src/scheduler/golden/leader_month.html"));
}

CORVANE_ON_EVERY_BACKEND(SchedulerOnEveryBackend);

}  // namespace corvane::testing
