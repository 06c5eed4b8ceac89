#include "table_page.h"

#include "corvane/host.h"

namespace corvane::site {

void TablePage(PageContext& p, const TableSpec& table) {
  Object dna = p.Server.CreateObject("corvane.DNA");
  if (DebugOn(p)) Call(dna, "DebugMode");
  Args open{Variant(ConnStr(p)), Variant(table.sql), Variant(table.captions)};
  dna.Invoke("OpenDNA", open);
  if (!table.codeSql.empty()) Call(dna, "SetCodeSQL", {Variant(table.codeSql)});
  if (!table.defaultItems.empty()) Call(dna, "SetDefaultItem", {Variant(table.defaultItems)});
  Call(dna, "SetTitle", {Variant(table.title)});
  const std::string action = dna.Get("strAction").Text();

  if (action == "delete") {
    // Back to the list once the row is gone, so that a reload does not delete again.
    Call(dna, "Delete");
    Call(dna, "CloseDNA");
    p.Response.Redirect(p.Request.ServerVariables("URL").Text() + "?action=list&page=1");
    return;
  }

  // DNA writes its style sheet link itself; the page head is written around it.
  std::string charset = CharsetName(p.Request.CodePage());
  p.Response.Write("<html><head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=" +
                   charset + "\">\r\n<title>" + Html(table.title) + "</title>\r\n");
  Call(dna, "SetDispStyle", {Variant(1)});
  p.Response.Write(
      "\r\n<link rel=\"stylesheet\" href=\"/include/site.css\" type=\"text/css\">"
      "\r\n<script src=\"/include/compat.js\"></script>\r\n</head>\r\n<body class=table>\r\n");
  Call(dna, "DispMenu");
  p.Response.Write(table.above);

  if (action == "insert" || action == "update" || action == "search") {
    Args a{Variant(action)};
    dna.Invoke("DispForm", a);
  } else if (action == "insert2") {
    p.Response.Write("<div class=message>");
    Call(dna, "Insert");
    p.Response.Write("</div>\r\n");
    Args a{Variant("insert2")};
    dna.Invoke("DispForm", a);
  } else if (action == "update2") {
    Call(dna, "Update");
    Call(dna, "DispList");
  } else if (action == "search2") {
    Call(dna, "search");
    Call(dna, "DispList");
  } else if (action == "setcol") {
    Call(dna, "DispSetColumns");
  } else {  // list, listall, setcol2 and anything unknown
    Call(dna, "DispList");
  }
  Call(dna, "CloseDNA");
  WriteFoot(p);
}

}  // namespace corvane::site
