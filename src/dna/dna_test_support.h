// Helpers for the DNA tests: a small staff table with a department code table, and a page that runs
// the class the way a site page does, over a session shared between requests.
#pragma once

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
         "insert into staff values(1,'张三',1,3000,'2026-01-05')",
         "insert into staff values(2,'李四',2,3500,'2026-02-10')",
         "insert into staff values(3,'王五',1,2800,'2026-03-15')",
         "insert into staff values(4,'赵六',2,4100,'2026-04-20')",
         "insert into staff values(5,'钱七',1,3900,'2026-05-25')",
         "create table dept(deptName varchar(20), deptID int)",
         "insert into dept values('办公室',1)", "insert into dept values('财务科',2)"});
  }

  // One value of the table, read back through the data layer (text form).
  std::string Value(const std::string& sql) const {
    auto conn = std::make_shared<ado::Connection>();
    conn->Open(connectionString);
    ado::Recordset rs;
    rs.Open(sql, conn);
    std::string v = rs.Eof() ? "<none>" : rs.Field(0).Text();
    rs.Close();
    conn->Close();
    return v;
  }
  int Count(const std::string& where = "") const {
    return std::stoi(Value("select count(*) from staff " + where));
  }
};

inline constexpr const char* kStaffSQL = "select id,name,dept from staff";
inline constexpr const char* kStaffCaptions = "编号,姓名,部门";
inline constexpr const char* kDeptCodeSQL = "id;name;select deptName,deptID from dept";

// One page view of "/staff.asp" (or another URL): the host creates the object and attaches it; the
// test calls its members; End() ends the page (OnEndPage) and answers everything written.
class DnaPage {
 public:
  DnaPage(host::Session session, std::string query, std::string body = "", std::string url = "/staff.asp")
      : page_(std::make_unique<host::Page>(
            host::PageRequest{.url = std::move(url),
                              .queryString = std::move(query),
                              .contentType = body.empty() ? "" : "application/x-www-form-urlencoded",
                              .body = std::move(body),
                              .codePage = kCodePageUtf8},
            session, LibraryHost())) {
    obj_ = page_->Server().CreateObject("corvane.DNA");
    dna_ = obj_.As<DNA>();
  }

  DNA& dna() { return *dna_; }
  const Object& obj() const { return obj_; }
  host::Page& page() { return *page_; }

  // OpenDNA with the staff table's SQL unless told otherwise.
  void Open(const StaffDatabase& db, std::string sql = kStaffSQL, std::string captions = kStaffCaptions) {
    Variant conn(db.connectionString), text(std::move(sql)), chinese(std::move(captions));
    dna_->OpenDNA(conn, text, chinese);
  }
  // What was written since the last call.
  std::string Take() {
    std::string all = page_->Output();
    std::string fresh = all.substr(taken_);
    taken_ = all.size();
    return fresh;
  }
  std::string End() {
    dna_->CloseDNA();
    page_->End();
    return Take();
  }

 private:
  std::unique_ptr<host::Page> page_;
  Object obj_;
  std::shared_ptr<DNA> dna_;
  size_t taken_ = 0;
};

// The documented pieces of a list page for "/staff.asp", for building expected pages.
namespace list_piece {

inline std::string BarStart() {
  return "<script>function gotoPage(page){ \r\n eval(\"document.location='/staff.asp?action=list&page=\""
         "+page.options[page.selectedIndex].value+\" '\");}</script>\r\n"
         "<div id=page><table cellspading=0 width=100%><tr>\r\n"
         "<td nowrap><div id=ctrlDiv><table class=Page><tr>";
}
inline std::string SelectStart() {
  return "</tr></table></div></td>\r\n<td width=100%>&nbsp;</td>\r\n"
         "<td nowrap>第<select id=ctrlDiv name=page onChange='gotoPage(this);return false;'> \r\n";
}
inline std::string Option(int i, bool selected) {
  std::string n = std::to_string(i);
  return "<option value=" + n + (selected ? " selected " : "") + " >" + n + "</option>\r\n";
}
inline std::string BarEnd(int page, int pages, int records) {
  return "</select><span id=npage style='display:none'>" + std::to_string(page) + "</span>页 共" +
         std::to_string(pages) + "页 共" + std::to_string(records) + "项</td>\r\n"
         "</table><span id=updateID></span><span id=deleteID></span> </div>\r\n";
}
// The number cell of a row: hidden edit and delete links, then the row's number on the list.
inline std::string RowStart(int n, const std::string& key) {
  std::string num = std::to_string(n);
  return "<tr>\r\n<td align=center nowrap><a href='/staff.asp?action=update&id=" + key +
         "' id=updateID style='display:none'><img src='images/edit.gif'height=16 width=16 border=0  "
         "alt=' 修 改 ?'></a><a href='/staff.asp?action=delete&id=" + key +
         "' id=deleteID style='display:none' onclick=\"return confirm('真的要删除第 " + num +
         " 条记录？');\"><img src='images/delete.gif'height=16 width=16 border=0  alt='删 除 ?'></a> " + num +
         "</td>";
}
inline std::string Cell(const std::string& v) { return "<td>" + v + "&nbsp;</td>"; }
inline std::string RowEnd() { return "</tr>\r\n"; }

}  // namespace list_piece

}  // namespace corvane::testing
