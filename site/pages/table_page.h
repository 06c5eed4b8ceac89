// A table page on the DNA browser: the page names the SQL, the captions and the code look-ups, and
// the page's action (list, listall, insert, insert2, update, update2, delete, search, search2,
// setcol, setcol2) picks what DNA shows or writes.
#pragma once

#include <string>

#include "page_kit.h"

namespace corvane::site {

struct TableSpec {
  std::string title;
  std::string sql;           // select key,f1,f2 from t [where a=1] order by x,y
  std::string captions;      // one per field
  std::string codeSql;       // one entry per field, ";" between: the field name or its look-up query
  std::string defaultItems;  // the columns shown on arrival ("" = all)
  std::string above;         // HTML written between the command bar and the table (links, notes)
};

void TablePage(PageContext& p, const TableSpec& table);

}  // namespace corvane::site
