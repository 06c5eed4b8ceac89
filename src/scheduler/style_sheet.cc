// The page style sheet for the calendar's tables, menus and paging bars. The calendar cells' own
// classes (sch*, schh, td1, td2 and the location classes) are styled by the pages.
#include "scheduler/scheduler.h"
#include "scheduler/scheduler_support.h"

namespace corvane {

namespace {

// ".lable" is the class name the pages use, spelled so.
constexpr std::string_view kRules[] = {
    ".tbl { background-color: #FFFFFF; FONT-FAMILY: '宋体'; width:100%;BORDER: black double;}",
    ".tbl th{BORDER-RIGHT: black 1pt solid;BORDER-TOP: black 1pt;BORDER-LEFT: black 1pt;BORDER-BOTTOM: black "
    "1pt solid }",
    ".tbl td{BORDER-RIGHT: black 1pt solid;BORDER-TOP: black 1pt;BORDER-LEFT: black 1pt;BORDER-BOTTOM: black "
    "1pt solid }",
    ".lable{background-color:#718EB7;FONT-FAMILY: '宋体';color:#FFFFFF;}",
    ".input{background-color: #E3ECF2;FONT-FAMILY: '宋体';}",
    ".tbl a{ color:black;text-decoration: none}",
    ".title { color:black;text-align: center; FONT-SIZE: 14pt bold; background-color: #FFFFFF; FONT-FAMILY: "
    "'宋体'; }",
    ".menu { background-color: #FFFFFF; FONT-FAMILY: '宋体'; width:100%;}",
    ".menu td{width:80px; color:#DDDDDD;background-color: #cdcdcd;text-align: center; BORDER-RIGHT: black "
    "1pt solid;BORDER-TOP: black 1pt;BORDER-LEFT: black 1pt;BORDER-BOTTOM: black 1pt solid }",
    ".menu.a2{width:100%;background-color: #EFEFEF;color:#FFFFFF;text-decoration: none}",
    ".menu a{ width:100%;color:black;text-decoration: none}",
    ".page { background-color: #FFFFFF; FONT-FAMILY: '宋体'; }",
    ".page td{width:60px;color:#DDDDDD;background-color:#F0F0F0;FONT-SIZE: small;text-align: center; "
    "BORDER-RIGHT: black 1pt solid;BORDER-TOP: black 1pt;BORDER-LEFT: black 1pt;BORDER-BOTTOM: black 1pt "
    "solid }",
    ".page a{ width:100%;color:black;FONT-SIZE: small;text-decoration: none}",
};

}  // namespace

// Type 1, or none given (Empty counts as empty text), writes the sheet; any other type writes an
// empty text. The blank test comes first: empty text is no number, and the numeric comparison with 1
// would refuse it (13), as it refuses any other text that is not a number.
void scheduler::SetDispStyle(Variant& nType) {
  std::string sheet;
  if (EqualsLiteral(nType, "") || EqualsLiteral(nType, 1)) {
    sheet = "<style>" + scheduling::kCrLf;
    for (std::string_view rule : kRules) sheet += std::string(rule) + scheduling::kCrLf;
    sheet += "</style>" + scheduling::kCrLf;
  }
  page_.Response().Write(sheet);
}

}  // namespace corvane
