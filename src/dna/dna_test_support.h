// Helpers for the DNA tests: a small staff table with a department code table, and one page view
// that runs the class the way a site page does, over a session that the views share.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "corvane/corvane.h"
#include "dna/dna.h"
#include "test_support.h"

namespace corvane::testing {

// staff(id, name, dept, pay, hired): five people in two departments; dept(deptName, deptID).
struct StaffDatabase : ScratchDatabase {
  StaffDatabase() {
    Run({"create table staff(id integer primary key, name varchar(20), dept int, pay int, hired datetime)",
         "insert into staff values(1,'张三',1,3000,'2026-01-05'),(2,'李四',2,3500,'2026-02-10'),"
         "(3,'王五',1,2800,'2026-03-15'),(4,'赵六',2,4100,'2026-04-20'),(5,'钱七',1,3900,'2026-05-25')",
         "create table dept(deptName varchar(20), deptID int)",
         "insert into dept values('办公室',1),('财务科',2)"});
  }
  // The first value of `sql`'s first row, as text; "<none>" without a row.
  std::string Value(const std::string& sql) const {
    auto conn = std::make_shared<ado::Connection>();
    conn->Open(connectionString);
    ado::Recordset rs;
    rs.Open(sql, conn);
    return rs.Eof() ? "<none>" : rs.Field(0).Text();
  }
};

inline const std::string kStaffSQL = "select id,name,dept from staff ";
inline const std::string kDeptCodes = "id;name;select deptName,deptID from dept";

// A hidden trace line.
inline const std::string kTraceSpan = "<span id=debugID style='display:none'>";
inline std::string Trace(const std::string& message) { return kTraceSpan + message + "</span>"; }

// One page view (a GET, or a POST of `body`) with a DNA object attached.
struct DnaPage {
  DnaPage(host::Session s, std::string query = "", std::string body = "", std::string url = "/staff.asp")
      // url, query string, content type, body, method, code page (posts percent-encode UTF-8)
      : page({url, query, "application/x-www-form-urlencoded", body, "", kCodePageUtf8}, s, LibraryHost()),
        obj(page.Server().CreateObject("corvane.DNA")),
        dna(*obj.As<DNA>()) {}

  void Open(const ScratchDatabase& db, std::string sql = kStaffSQL, std::string captions = "编号,姓名,部门") {
    Variant conn(db.connectionString), text(std::move(sql)), chinese(std::move(captions));
    dna.OpenDNA(conn, text, chinese);
  }
  // What was written since the last call.
  std::string Take() {
    std::string all = page.Output(), fresh = all.substr(taken);
    taken = all.size();
    return fresh;
  }
  std::string End() {
    dna.CloseDNA();
    page.End();
    return Take();
  }

  host::Page page;
  Object obj;
  DNA& dna;
  size_t taken = 0;
};

// The staff table, and a session that has seen /staff.asp already (so sort and columns stay).
class DnaTable : public ::testing::Test {
 protected:
  DnaTable() { session.Set("strURL", Variant("/staff.asp")); }
  StaffDatabase db;
  host::Session session;
};

}  // namespace corvane::testing
