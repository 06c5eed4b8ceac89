// The style sheet link and the command bar with its script, for every action.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {

TEST_F(DnaTable, CommandBarOfListPagesHasEveryCommandOfFormPagesOnlyReturn) {
  for (const std::string action : {"list", "listall", "update2", "search2", "setcol2", "insert", "update",
                                   "search", "setcol", "insert2", ""}) {
    const bool list = action.starts_with("list") || (action.ends_with("2") && action != "insert2");
    DnaPage p(session);
    p.Open(db);
    p.dna.strAction = action;
    p.dna.SetTitle(Variant("职工名单"));
    if (!list) p.dna.DebugMode();  // in debug mode the trace switch follows the last command
    p.Take();
    p.dna.SetDispStyle(Variant(action));  // the same link whatever the argument
    p.dna.DispMenu();
    EXPECT_EQ(p.Take(),
              Golden(std::string("src/dna/golden/menu_") + (list ? "list.html" : "form_debug.html")))
        << action;
  }
}

}  // namespace corvane::testing
