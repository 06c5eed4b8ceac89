// The list view: the list SQL from the session's sort and search, a keyset recordset positioned on the
// requested page, and the page built as four strings (paging bar, header, rows, table end), each
// written with one Response.Write. Also GetList and GetRs, which open the caller's recordset.
#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/ado.h"
#include "corvane/host.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "dna/int16.h"
#include "dna/text_append.h"
#include "page_kit/page_kit.h"

namespace corvane {

namespace {

using dna::Append;
using dna::AppendText;
using page_kit::kCrLf;

// A row of the list is about 700 bytes; the rows' string is reserved for a page of them (at most 64 rows'
// worth: "listall" pages hold up to 2000).
constexpr size_t kRowBytes = 1024;
constexpr int kRowsReserved = 64;

// Opens a recordset that the page created (early-bound when it is ours, late-bound otherwise).
void OpenCallersRecordset(const Variant& objRs, const std::string& sql,
                          const std::shared_ptr<ado::Connection>& objConn) {
  Object rs = objRs.ToObject();
  if (auto ours = rs.As<ado::Recordset>()) {
    ours->Open(sql, objConn, ado::adOpenKeyset, -1, -1);
    return;
  }
  Args args{Variant(sql), Variant(Object(objConn)), Variant(1), Variant(-1), Variant(-1)};
  rs.Invoke("Open", args);
}

// The page selector's options, one a page: "<option value=" + i + [" selected "] + " >" + i +
// "</option>" + CR LF. A million-row table has 50,000 of them, so they are written straight into the
// string's buffer.
void AppendPageOptions(std::string& s, int32_t pageCount, int16_t nPage) {
  static constexpr std::string_view kHead = "<option value=", kSelected = " selected ", kClose = " >",
                                    kTail = "</option>\r\n";
  constexpr size_t kLongest = kHead.size() + kSelected.size() + kClose.size() + kTail.size() + 2 * 11;
  if (pageCount < 1) return;
  const size_t start = s.size();
  s.resize(start + static_cast<size_t>(pageCount) * kLongest);
  char* out = s.data() + start;
  auto put = [&out](std::string_view piece) { out = std::copy(piece.begin(), piece.end(), out); };
  for (int32_t i = 1; i <= pageCount; ++i) {
    put(kHead);
    char* number = out;
    out = std::to_chars(out, out + 11, i).ptr;
    const std::string_view digits(number, static_cast<size_t>(out - number));
    if (nPage == i) put(kSelected);
    put(kClose);
    put(digits);
    put(kTail);
  }
  s.resize(static_cast<size_t>(out - s.data()));
}

}  // namespace

std::string DNA::ListSQL() {
  std::string order;
  std::string primary = SessionText("strOrder");
  if (!primary.empty()) {
    order = " order by " + primary;
    std::string secondary = SessionText("strOrder2");
    if (!secondary.empty()) order += "," + secondary;
  }
  std::string where = strWhere;
  std::string condition = SessionText("strSearch");
  if (!condition.empty())
    where = strWhere.empty() ? " where " + condition + " " : strWhere + " and " + condition + " ";
  std::string sql = "select " + strItemEnglish + " from " + strTable + " " + where + order;
  Session().Set("strSQL", Variant(sql));
  return sql;
}

void DNA::DispList() {
  objRs = std::make_shared<ado::Recordset>();
  std::string sql = ListSQL();
  if (bDebug) WriteTrace("SQL:" + sql);
  objRs->Open(sql, objConn, ado::adOpenKeyset, -1, -1);
  Out().Write(GetPageBar());
  Out().Write(GetListHeader());
  Out().Write(GetListRows());
  Out().Write(GetListEnd());
  objRs->Close();
  objRs.reset();
  if (bDebug) WriteTrace("##调试信息:DispList OK!<br>" + kCrLf);
}

std::string DNA::GetPageBar() {
  nPageSize = strAction != "listall" ? SessionValue("nPageSize").ToInteger() : int16_t{2000};
  if (!objRs->Eof()) {
    objRs->SetPageSize(nPageSize);
    objRs->SetAbsolutePage(nPage);
  }
  const int32_t pageCount = objRs->PageCount();
  const int32_t recordCount = objRs->RecordCount();
  const std::string pageLink = "<td nowrap><a href='" + strURL + "?action=list&page=";

  std::string s;
  s.reserve(2048);
  s += "<script>function gotoPage(page){ " + kCrLf + " eval(\"document.location='" + strURL +
       "?action=list&page=\"+page.options[page.selectedIndex].value+\" '\");}</script>" + kCrLf;
  // "cellspading" is what the site's pages have always carried.
  s += "<div id=page><table cellspading=0 width=100%><tr>" + kCrLf +
       "<td nowrap><div id=ctrlDiv><table class=Page><tr>";
  if (nPage > 1) {
    s += pageLink + "1'>第一页</a></td>";
    s += pageLink + std::to_string(dna::Sub16(nPage, 1)) + "'>上一页</a></td>";
  } else {
    s += "<td nowrap>第一页</td><td nowrap>上一页</td>";
  }
  if (nPage < pageCount)
    s += pageLink + std::to_string(dna::Add16(nPage, 1)) + "'>下一页</a></td>";
  else
    s += "<td nowrap>下一页</td>";
  if (nPage < pageCount)
    s += pageLink + std::to_string(pageCount) + "'>最末页</a></td>";
  else
    s += "<td nowrap>最末页</td>";
  auto more = Compare(Variant(recordCount), SessionValue("nPageSize"));
  if (more && *more > 0) {
    if (strAction != "listall")
      s += "<td nowrap><a href='" + strURL + "?action=listall&page=1'>>>全部</a></td>";
    else
      s += "<td nowrap><a href='" + strURL + "?action=list&page=1'>>>分页</a></td>";
  }
  s += "</tr></table></div></td>" + kCrLf + "<td width=100%>&nbsp;</td>" + kCrLf +
       "<td nowrap>第<select id=ctrlDiv name=page onChange='gotoPage(this);return false;'> " + kCrLf;
  AppendPageOptions(s, pageCount, nPage);
  s += "</select><span id=npage style='display:none'>" + std::to_string(nPage) + "</span>页 共" +
       std::to_string(pageCount) + "页 共" + std::to_string(recordCount) + "项</td>" + kCrLf;
  s += "</table><span id=updateID></span><span id=deleteID></span> </div>" + kCrLf;
  return s;
}

std::string DNA::GetListHeader() {
  const std::string_view mode = strAction == "listall" ? "listall" : "list";
  const std::string chose = SessionText("strItemChose");
  const std::string primary = SessionText("strOrder");
  const std::string secondary = SessionText("strOrder2");
  std::string s = "<table class=tbl cellSpacing=0>" + kCrLf + "<tr><th nowrap>序号</th>";
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    const std::string& name = aEnglish[i];
    if (InStr(chose, name) == 0) continue;
    // Filled arrows mark the primary sort, hollow ones the secondary; down when " DESC " follows.
    std::string_view arrow;
    if (InStr(primary, name) > 0) {
      arrow = Len(primary) > Len(name) + 1 ? " <span id=ctrlDiv><font size=-2>▼</font></span>"
                                           : " <span id=ctrlDiv><font size=-2>▲</font></span>";
    } else if (InStr(secondary, name) > 0) {
      arrow = Len(secondary) > Len(name) + 1 ? " <span id=ctrlDiv><font size=-2>▽</font></span>"
                                             : " <span id=ctrlDiv><font size=-2>△</font></span>";
    }
    Append(s, {"<th nowrap><a href='", strURL, "?action=", mode, "&page=1&order=", name, "'>", aChinese[i],
               arrow, "</a></th>"});
  }
  s += "</tr>" + kCrLf;
  return s;
}

std::string DNA::GetListRows() {
  std::string s;
  // Row numbers are 16-bit: a deep page overflows here or in the loop's bound below.
  int16_t n = dna::Add16(dna::Mul16(dna::Sub16(nPage, 1), nPageSize), 1);
  const std::string chose = SessionText("strItemChose");
  if (objRs->Eof()) {
    size_t columns = Split(chose, ",").size() + 1;
    return "<tr><td colspan=" + std::to_string(columns) + " align=center>无记录</td></tr>";
  }
  // The shown columns: every test on the choice is a substring test.
  std::vector<int32_t> shown;
  for (int32_t j = 0; j <= aEnglish.UBound(); ++j)
    if (InStr(chose, aEnglish[j]) > 0) shown.push_back(j);

  const int16_t last = dna::Mul16(nPageSize, nPage);
  const std::string editHead = "<a href='" + strURL + "?action=update&" + strItemKeyName + "=";
  const std::string deleteHead = "<a href='" + strURL + "?action=delete&" + strItemKeyName + "=";
  s.reserve(kRowBytes * static_cast<size_t>(std::clamp<int>(nPageSize, 1, kRowsReserved)));
  while (!objRs->Eof() && n <= last) {
    const std::string k = objRs->Field(strItemKeyName).Text();
    char digits[8];
    const std::string_view number(digits, std::to_chars(digits, digits + sizeof digits, n).ptr - digits);
    Append(s, {"<tr>", kCrLf, "<td align=center nowrap>", editHead, k,
               "' id=updateID style='display:none'><img src='images/edit.gif'height=16 width=16 border=0  "
               "alt=' 修 改 ?'></a>",
               deleteHead, k, "' id=deleteID style='display:none' onclick=\"return confirm('真的要删除第 ",
               number,
               " 条记录？');\"><img src='images/delete.gif'height=16 width=16 border=0  alt='删 除 ?'></a>",
               " ", number, "</td>"});
    for (int32_t j : shown) {
      Variant v = objRs->Field(aEnglish[j]);
      s += "<td>";
      if (aCodeSQL[j] == aEnglish[j])
        AppendText(s, v);
      else
        AppendText(s, CodeName(aCodeSQL[j], v));
      s += "&nbsp;</td>";
    }
    Append(s, {"</tr>", kCrLf});
    objRs->MoveNext();
    n = dna::Add16(n, 1);
  }
  return s;
}

std::string DNA::GetListEnd() { return "</table>" + kCrLf; }

// The caller's recordset is not the object's own objRs, which the list keeps to itself.
void DNA::GetList(Variant& callersRs) {
  std::string sql = ListSQL();
  // Unlike DispList, the SQL goes to the page itself, not into the hidden trace.
  if (bDebug) Out().Write("SQL:" + sql);
  OpenCallersRecordset(callersRs, sql, objConn);
  if (bDebug) {
    WriteTrace("##调试信息:DispList OK!<br>" + kCrLf);
    WriteTrace("#Session(strSQL):" + SessionText("strSQL") + "<br>" + kCrLf);
  }
}

void DNA::GetRs(const Variant& strSQL, Variant& callersRs) {
  OpenCallersRecordset(callersRs, strSQL.ToString(), objConn);
}

}  // namespace corvane
