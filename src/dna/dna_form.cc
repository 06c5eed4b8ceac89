// The record form: one caption and input per field, two pairs a row, for adding ("insert"), changing
// ("update", which reads the current record first) and a combined search ("search"). Code fields
// become drop-down lists, or a name and a hidden input when the table's filter fixes them; date
// fields get a calendar button. Also the field types every form and write needs, and the page's
// default column choice.
#include <string>

#include "corvane/ado.h"
#include "corvane/host.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "page_kit/page_kit.h"

namespace corvane {

using page_kit::kCrLf;

// Reads each field's ADO type code from a one-row query on its own connection, tracing one line per
// field in debug mode.
void DNA::ReadFieldTypes() {
  auto rs = std::make_shared<ado::Recordset>();
  rs->Open("select top 1 " + strItemEnglish + " from " + strTable, Variant(strConn), ado::adOpenKeyset, -1,
           -1);
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    aFieldType[i] = Variant(static_cast<int32_t>(rs->FieldType(aEnglish[i])));
    if (bDebug) WriteTrace(aEnglish[i] + ":" + aFieldType[i].Text() + "<br>");
  }
  rs->Close();
}

void DNA::DispForm(Variant& action) {
  const std::string act = action.Text();
  const bool update = EqualsLiteral(action, "update"), search = EqualsLiteral(action, "search");
  std::string word = update ? "修改" : EqualsLiteral(action, "insert") ? "添加" : search ? "查询" : "";
  ReadFieldTypes();

  std::string sql;
  if (update) {
    // The object's own filter is narrowed for good: later calls build on it.
    const std::string key = strItemKeyName + "=" + nItemKeyValue.Text();
    strWhere = strWhere.empty() ? " where " + key : strWhere + " and " + key;
    sql = "select " + strItemEnglish + " from " + strTable + " " + strWhere;
    objRs = std::make_shared<ado::Recordset>();
    objRs->Open(sql, Variant(strConn), ado::adOpenKeyset, -1, -1);
    if (!objRs->Eof())
      for (int32_t i = 0; i <= aEnglish.UBound(); ++i) aValue[i] = objRs->Field(aEnglish[i]);
    objRs.reset();
  } else if (EqualsLiteral(action, "insert2")) {
    for (int32_t i = 0; i <= aValue.UBound(); ++i) aValue[i] = Variant("");
    word = "添加";
  }

  host::Response& out = Out();
  out.Write("<Form id=Frm1 name='" + act + "' method='post' Action='" + strURL + "'>" + kCrLf);
  out.Write(kCrLf +
            "<table border='0'  cellpadding='0' cellspacing='0' align='center' width='100%'class=td2 >");
  out.Write(kCrLf +
            "<tr valign=top ><td width=37 align=left><img src='../images/home1.gif'></td><td class=t1>"
            "</td><td class=t1></td><td class=t1></td><td class=t1></td><td align=right><img "
            "src='../images/home2.gif'></td></tr>");
  // The form posts its action with "2" appended: "update2", "insert2", "search2".
  out.Write("<input type='hidden' name='action' value='" + act + "2'>" + kCrLf);

  bool secondOfRow = false;
  int32_t calendars = 0;
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    const std::string& name = aEnglish[i];
    if (name == strItemKeyName) {
      out.Write("<input type='hidden' name='" + name + "' value='" + aValue[i].Text() + "'><br>" + kCrLf);
      continue;
    }
    if (!secondOfRow) out.Write("<tr><td class=t2></td>");
    out.Write("<td align=right class=lable>" + aChinese[i] + "</td><td class=input>");
    if (Trim(name) == Trim(aCodeSQL[i])) {
      if (EqualsLiteral(aFieldType[i], ado::adDBTimeStamp)) {
        const std::string n = std::to_string(++calendars);
        // A Null date stays as it is (its trimmed text is Null, not empty).
        if (!aValue[i].IsNull() && Trim(aValue[i].Text()).empty()) aValue[i] = SessionValue("sc_curdate");
        out.Write("<input type='text' name='" + name + "' value='" + aValue[i].Text() +
                  "' size=14><IMG align=top height=25 id=Cal" + n + "  onclick= \"ShowCal(Cal" + n +
                  ".offsetLeft + 20, Cal" + n + ".offsetTop , '" + name +
                  "');\"  onmouseover=keepCal(); src=\"../Images/dropdown.gif\" width=27 "
                  "style=\"POSITION: absolute;\"> </td>" +
                  kCrLf);
      } else {
        out.Write("<input type='text' name='" + name + "' value='" + aValue[i].Text() +
                  "' onMouseOver='this.focus()'  onFocus='this.select()'></td>" + kCrLf);
      }
    } else {
      // A field that the filter fixes is shown by name, not chosen; the last matching term wins.
      bool fixed = false;
      Variant value;
      for (int32_t j = 0; j <= aFixedName.UBound(); ++j) {
        if (Trim(aFixedName[j].Text()) == Trim(name)) {
          fixed = true;
          value = aFixedValue[j];
        }
      }
      if (fixed) {
        out.Write(CodeName(aCodeSQL[i], value));
        // No closing </td> here, unlike every other kind of field.
        out.Write("<input type='hidden' name='" + name + "' value='" + value.Text() + "'>");
      } else {
        out.Write("<select name='" + name + "' >");
        if (search) out.Write("<option></option>");
        out.Write(SelectForm(Variant(aCodeSQL[i]), aValue[i]));
        out.Write(kCrLf + "</select></td>");
      }
    }
    if (secondOfRow) out.Write("<td class=t3></td></tr>");
    secondOfRow = !secondOfRow;
  }
  if (secondOfRow) out.Write("<td class=lable>&nbsp;</td><td class=t3></td></tr>");

  out.Write(kCrLf +
            "<tr valign=top class=td2><td width=37 align=left><img src='../images/home3.gif'></td>"
            "<td class=t4></td><td class=t4></td><td class=t4></td><td class=t4></td><td align=right>"
            "<img src='../images/home4.gif'></td></tr>");
  out.Write(kCrLf + "</table><center><input type='submit' value='提交" + word + "'>");
  out.Write(kCrLf + "<input type='reset' value='重新" + word + "'></center></Form>");
  if (calendars > 0) {
    out.Write(kCrLf + "<Script language=\"javascript\" src=\"../Include/Calendar.js\"></Script>");
    out.Write(kCrLf +
              "<DIV id=calendar onmouseover=keepCal(); style=\"POSITION: absolute; VISIBILITY: hidden; "
              "Z-INDEX: 200\"></DIV>");
  }
  if (bDebug) {
    WriteTrace(kCrLf + "##调试信息:DisplayForm OK!<br>");
    WriteTrace(kCrLf + "#StrSQL=" + sql + "<br>");
  }
}

void DNA::SetDefaultItem(const Variant& defaultItems) {
  const bool given = !defaultItems.Text().empty();
  if (given) strDefault = defaultItems.ToString();
  // Only on the first view of a page reached from another page (the URL is stored at page end).
  if (SessionText("strURL") != strURL && given)
    Session().Set("strItemChose", Variant(defaultItems.ToString()));
  if (bDebug) {
    WriteTrace(kCrLf + "##调试信息:SetDefaultItem OK!<br>");
    WriteTrace("#Session(strItemChose):" + SessionText("strItemChose") + "<br>" + kCrLf);
  }
}

}  // namespace corvane
