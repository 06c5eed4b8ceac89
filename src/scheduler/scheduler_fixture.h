// Test fixture for the scheduler: a scratch database with the plan and staff tables, a signed-in
// session, and a page on which "corvane.scheduler" is created and connected.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "corvane/corvane.h"
#include "scheduler/scheduler.h"
#include "test_support.h"

namespace corvane::scheduling::testing {

// Location types 1 本部 (Office), 2 北京, 3 外地, 4 国外 (stored with blanks around it), 5 其他;
// places 1 总部, 2 海淀, 3 上海, 4 东京. Duties 1 经理, 2 职员. Plans are added by each test.
inline void CreateTables(const corvane::testing::ScratchDatabase& db) {
  db.Run({
      "create table planAddrType(planAddrTypeID int primary key, planAddrTypeName varchar(20))",
      "create table planAddr(planAddrID int primary key, planAddrName varchar(40))",
      "create table personPlan(planID integer primary key, planStartTime datetime, planEndTime datetime,"
      " planAddrTypeID int, planAddrID int, planAddrDetail varchar(50), planTypeID int,"
      " planContent varchar(200), planAddition varchar(200), planFlagID int, personID int)",
      "create table personDuty(dutyID int primary key, dutyName varchar(20))",
      "create table person(personID int primary key, personName varchar(20), dutyID int, systemID int)",
      "insert into planAddrType values (1,'本部'),(2,'北京'),(3,'外地'),(4,'  国外 '),(5,'其他')",
      "insert into planAddr values (1,'总部'),(2,'海淀'),(3,'上海'),(4,'东京')",
      "insert into personDuty values (1,'经理'),(2,'职员')",
  });
}

// One plan row: times as 'yyyy-mm-dd[ hh:mm:ss]' text.
struct Plan {
  int person;
  std::string start;
  std::string end;
  int type;
  int place;
  int flag;
};

inline void AddPlans(const corvane::testing::ScratchDatabase& db, const std::vector<Plan>& plans) {
  ado::Connection c;
  c.Open(db.connectionString);
  for (const Plan& p : plans) {
    c.Execute("insert into personPlan(planStartTime,planEndTime,planAddrTypeID,planAddrID,"
              "planAddrDetail,planTypeID,planContent,planAddition,planFlagID,personID) values ('" +
              p.start + "','" + p.end + "'," + std::to_string(p.type) + "," + std::to_string(p.place) +
              ",'',1,'','',"+ std::to_string(p.flag) + "," + std::to_string(p.person) + ")");
  }
  c.Close();
}

class SchedulerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CreateTables(db);
    session.Set("personID", Variant(1));
    session.Set("systemID", Variant(1));
    session.Set("rnd", Variant("77"));
  }

  // Opens a page, creates the scheduler on it and connects it to the database.
  scheduler& Open(std::string url = "/scheduler/personMonth.asp") {
    page = std::make_unique<host::Page>(host::PageRequest{.url = std::move(url)}, session, corvane::testing::LibraryHost());
    obj = page->Server().CreateObject("corvane.scheduler");
    Variant conn(db.connectionString);
    obj.As<scheduler>()->Init(conn);
    return *obj.As<scheduler>();
  }

  void TearDown() override {
    if (page) page->End();
  }

  corvane::testing::ScratchDatabase db;
  host::Session session;
  std::unique_ptr<host::Page> page;
  Object obj;
};

// The lines of a text split at CR LF (a trailing CR LF gives no empty last line).
inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> out;
  size_t from = 0;
  while (from < text.size()) {
    size_t at = text.find("\r\n", from);
    if (at == std::string::npos) {
      out.push_back(text.substr(from));
      break;
    }
    out.push_back(text.substr(from, at - from));
    from = at + 2;
  }
  return out;
}

// Joins lines, each followed by CR LF.
inline std::string CrLfLines(const std::vector<std::string>& lines) {
  std::string out;
  for (const std::string& l : lines) out += l + "\r\n";
  return out;
}

inline size_t Count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
  return n;
}

}  // namespace corvane::scheduling::testing
