// Whole outputs against their golden files: list pages (paging bar, header with sort arrows, rows,
// table end), the column choice form and the record forms of every action.
#include <gtest/gtest.h>

#include <functional>

#include "dna/dna_test_support.h"

namespace corvane::testing {

// What a form page does: the form for the request's action.
static void Form(DNA& dna) {
  Variant action(dna.strAction);
  dna.DispForm(action);
}

TEST_F(DnaTable, WholeOutputsMatchTheirGoldenFiles) {
  // Two date fields, a code field and an odd number of shown fields.
  const std::string form = "select id,hired,name,dept,hired,pay from staff ";
  // The golden file, the session's values before the view ("key=value;..."), the request, the SQL,
  // and the call.
  // clang-format off
  const std::tuple<const char*, const char*, const char*, std::string, std::function<void(DNA&)>> cases[] = {
      {"list_first_of_three.html", "strOrder=name DESC ;strOrder2=dept", "page=1&pageSize=2", kStaffSQL,
       &DNA::DispList},
      {"list_last_page.html", "strOrder=dept;strOrder2=name DESC ", "page=3&pageSize=2", kStaffSQL,
       &DNA::DispList},
      {"list_all.html", "strItemChose=name, dept", "action=listall&pageSize=2", kStaffSQL, &DNA::DispList},
      // In debug mode: a default sort of three terms, and a search that leaves nothing in the filter.
      {"list_empty_debug.html", "strSearch=name like '%李%' ", "page=1",
       kStaffSQL + "where dept=1 order by name,id,dept", &DNA::DispList},
      {"set_columns.html", "nPageSize=15;strItemChose=id, dept", "action=setcol&page=1", kStaffSQL,
       &DNA::DispSetColumns},
      {"form_update.html", "", "action=update&id=3", form + "where pay>0", Form},
      {"form_insert.html", "", "action=insert", form + "where dept=2", Form},  // dept is fixed
      {"form_insert2.html", "", "action=insert2&name=x&hired=2020-01-01", form + "where dept=2", Form},
      // The posted text "2" is not the number 2: no code is selected.
      {"form_search.html", "", "action=search&name=%E5%BC%A0&dept=2", form + "where pay>0", Form},
      // No action word; an even number of shown fields needs no filler.
      {"form_view.html", "", "action=view", "select id,hired,name,dept,hired from staff where pay>0", Form},
  };
  // clang-format on
  for (const auto& [golden, state, query, sql, call] : cases) {
    host::Session fresh;
    fresh.Set("strURL", Variant("/staff.asp"));
    fresh.Set("sc_curdate", Variant("2026-11-02"));
    for (const std::string& kv : Split(state, ";")) fresh.Set(Split(kv, "=")[0], Variant(Split(kv, "=")[1]));
    DnaPage p(fresh, query);
    const bool debug = std::string(golden).ends_with("debug.html");
    if (debug) p.dna.DebugMode();
    p.Open(db, sql, sql.starts_with(kStaffSQL) ? "编号,姓名,部门" : "编号,入职,姓名,部门,入职,工资");
    p.dna.SetCodeSQL(Variant(Replace(p.dna.strItemCodeSQL, "dept", "select deptName,deptID from dept")));
    call(p.dna);
    // A list is written in four pieces: bar, header, rows and end.
    EXPECT_TRUE(debug || !std::string(golden).starts_with("list") || p.page.Writes().size() == 4) << golden;
    EXPECT_EQ(p.End(), Golden(std::string("src/dna/golden/") + golden)) << golden;
  }
}

}  // namespace corvane::testing
