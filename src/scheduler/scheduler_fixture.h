// Test fixture for the scheduler: a scratch database holding one small company and its plans, a
// signed-in session, a fixed clock and a page on which "corvane.scheduler" is created and connected.
#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <string>

#include "corvane/corvane.h"
#include "scheduler/scheduler.h"
#include "test_support.h"

namespace corvane::scheduling::testing {

using corvane::testing::ErrorNumber;
using corvane::testing::Golden;

// The expected text of src/scheduler/golden/<name>.
inline std::string Expected(const std::string& name) { return Golden("src/scheduler/golden/" + name); }

// Location types 1 本部, 2 北京, 3 外地, 4 国外 (stored with blanks around it), 5 其他; places 1 总部,
// 2 海淀, 3 上海, 4 东京; duties 1 经理, 2 职员. System 1: 张三 (经理, id 1), 李四 and 赵六 (职员, ids 2
// and 4); 王五 (id 3) is in system 2. Plans (flag 1 is public, any other flag private):
//   张三  10-30 .. 11-02              外地:上海  public: across the month end, into slots 30, 31, 1, 2
//         11-01 .. 11-04              国外:东京  public
//         11-02 .. 11-05              外地:总部  flag 2
//         11-03 09:00 .. 11-04 18:00  北京:海淀  public: starts after the midnight of the 3rd
//         11-04 .. 11-04 12:00        其他:总部  flag 0
//         11-05 08:00 .. 11-06 07:00  本部:海淀  public: ends earlier in the day than it starts
//   李四  11-04 .. 11-06              北京:上海  public
//         11-02                       国外:东京  flag 0
// The session is 张三's (personID 1, systemID 1, rnd "77"); the clock stands at 08:30:15.5 (Timer).
class SchedulerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db.Run({
        "create table planAddrType(planAddrTypeID int primary key, planAddrTypeName text)",
        "create table planAddr(planAddrID int primary key, planAddrName text)",
        "create table personPlan(planID integer primary key, planStartTime datetime, planEndTime datetime,"
        " planAddrTypeID, planAddrID, planAddrDetail, planTypeID, planContent, planAddition, planFlagID, "
        "personID)",
        "create table personDuty(dutyID int primary key, dutyName text)",
        "create table person(personID int primary key, personName text, dutyID int, systemID int)",
        "insert into planAddrType values (1,'本部'),(2,'北京'),(3,'外地'),(4,'  国外 '),(5,'其他')",
        "insert into planAddr values (1,'总部'),(2,'海淀'),(3,'上海'),(4,'东京')",
        "insert into personDuty values (1,'经理'),(2,'职员')",
        "insert into person values (2,'李四',2,1),(1,'张三',1,1),(3,'王五',2,2),(4,'赵六',2,1)",
        "insert into personPlan(planStartTime,planEndTime,planAddrTypeID,planAddrID,planFlagID,personID) "
        "values"
        " ('2026-10-30','2026-11-02',3,3,1,1), ('2026-11-01','2026-11-04',4,4,1,1),"
        " ('2026-11-02','2026-11-05',3,1,2,1), ('2026-11-03 09:00:00','2026-11-04 18:00:00',2,2,1,1),"
        " ('2026-11-04','2026-11-04 12:00:00',5,1,0,1), ('2026-11-05 08:00:00','2026-11-06 "
        "07:00:00',1,2,1,1),"
        " ('2026-11-04','2026-11-06',2,3,1,2), ('2026-11-02','2026-11-02',4,4,0,2)",
    });
    for (auto [key, value] :
         {std::pair{"personID", Variant(1)}, {"systemID", Variant(1)}, {"rnd", Variant("77")}})
      session.Set(key, value);
    SetClock([] {
      std::tm t{.tm_sec = 15, .tm_min = 30, .tm_hour = 8, .tm_mday = 2, .tm_year = 126, .tm_isdst = -1};
      return std::chrono::system_clock::from_time_t(std::mktime(&t)) + std::chrono::milliseconds(500);
    });
  }
  void TearDown() override { SetClock(nullptr); }  // the page, when still open, ends as it goes

  // Opens a page at `url`, creates the scheduler on it and connects it. The tests call it late-bound,
  // as the pages do, so that its member table is under test with every call.
  const Object& Open(std::string url = "/scheduler/personMonth.asp") {
    page =
        std::make_unique<host::Page>(host::PageRequest{.url = url}, session, corvane::testing::LibraryHost());
    obj = page->Server().CreateObject("corvane.scheduler");
    obj.Invoke("Init", {Variant(db.connectionString)});
    return obj;
  }

  corvane::testing::ScratchDatabase db;
  host::Session session;
  std::unique_ptr<host::Page> page;
  Object obj;
  Variant cond{"person.personID<>4"};  // the leader views' condition: system 1 but 赵六
};

// How often `what` occurs in `text`.
inline long Count(const std::string& text, std::string_view what) {
  return long(text.size() - Replace(text, what, "").size()) / long(what.size());
}

}  // namespace corvane::scheduling::testing
