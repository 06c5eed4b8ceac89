// OpenDNA: the page's SQL taken apart into table, field list, filter and default sort, the per-field
// lists, the fixed fields of the filter; and SetCodeSQL, which replaces the code-lookup list.
#include <string>

#include "corvane/text.h"
#include "corvane/variant.h"
#include "dna/dna.h"
#include "page_kit/page_kit.h"

namespace corvane {

using page_kit::kCrLf;

void DNA::OpenDNA(Variant& ConnStr, Variant& strSQL, Variant& StrChinese) {
  strConn = ConnStr.ToString();
  strSQL = Variant(Trim(strSQL.ToString()));
  const std::string sql = *strSQL.StringPtr();
  // Every keyword is found in the lower-case copy, so "FROM" and "From" count too; positions from 1.
  const std::string lower = LCase(sql);
  const int32_t length = Len(sql);

  int32_t p = InStr(lower, "from");
  if (p < 8)
    strItemEnglish = Trim(Right(sql, length - 7));
  else
    strItemEnglish = Trim(Mid(sql, 7, p - 7));
  if (p > 7) {
    std::vector<std::string> rest = Split(Mid(sql, p, length - p + 1), " ");
    if (rest.size() >= 2) strTable = rest[1];
  }

  p = InStr(lower, "where");
  if (p > 7) {
    int32_t order = InStr(lower, "order");
    strWhere = order > 7 ? Trim(Mid(sql, p, order - p)) : Trim(Mid(sql, p));
  }

  p = InStr(lower, "order by");
  if (p > 7) {
    strDefaultOrder = Replace(Trim(Mid(sql, p)), "order by ", "");
    std::vector<std::string> terms = Split(strDefaultOrder, ",");
    // A single default sort term never reaches the session; two terms fill only "strOrder".
    if (terms.size() >= 2 && SessionText("strOrder").empty()) {
      Session().Set("strOrder", Variant(Trim(terms[0])));
      if (terms.size() >= 3) Session().Set("strOrder2", Variant(Trim(terms[1])));
    }
  }

  strItemChinese = StrChinese.Text().empty() ? strItemEnglish : StrChinese.ToString();
  strItemCodeSQL = Replace(strItemEnglish, ",", ";");
  aEnglish.Assign(Split(strItemEnglish, ","));
  aChinese.Assign(Split(strItemChinese, ","));
  aCodeSQL.Assign(Split(strItemCodeSQL, ";"));
  if (aEnglish.UBound() >= 1) strItemKeyName = aEnglish[0];
  aValue.ReDim(aEnglish.UBound() + 1);
  aFieldType.ReDim(aEnglish.UBound() + 1);

  // The filter's field=value terms fix those fields in the form and the writes. Only a conjunction
  // written without blanks around "=" and inside values splits into useful terms.
  dna::VbArray<std::string> terms;  // never sized when there is no filter
  std::string w = Trim(strWhere);
  if (!w.empty()) {
    w = Trim(Replace(Replace(w, "where ", "  "), " and ", " "));
    terms.Assign(Split(w, " "));
    aFixedName.ReDim(terms.UBound() + 1);
    aFixedValue.ReDim(terms.UBound() + 1);
    for (int32_t i = 0; i <= terms.UBound(); ++i) {
      std::vector<std::string> parts = Split(terms[i], "=");
      if (parts.size() >= 2) {
        aFixedName[i] = Variant(Trim(parts[0]));
        aFixedValue[i] = Variant(Trim(parts[1]));
      }
    }
  }

  if (bDebug) {
    WriteTrace("##调试信息:OpenDNA<br>" + kCrLf);
    WriteTrace("#表　　名:" + strTable + "<br>" + kCrLf);
    WriteTrace("#条　　件:" + strWhere + "<br>" + kCrLf);
    WriteTrace("#英文字段:" + strItemEnglish + "<br>" + kCrLf);
    WriteTrace("#中文字段:" + strItemChinese + "<br>" + kCrLf);
    WriteTrace("#主键字段:" + strItemKeyName + "<br>" + kCrLf);
    WriteTrace("#编码检索:" + strItemCodeSQL + "<br>" + kCrLf);
    WriteTrace("#缺省排序:" + strDefaultOrder + ":" + SessionText("strOrder") + ": " +
               SessionText("strOrder2") + "<br>" + kCrLf);
    // Without a filter the terms were never split: this raises 9 before the connection is opened.
    for (int32_t i = 0; i <= terms.UBound(); ++i)
      WriteTrace("限定字段:" + aFixedName[i].Text() + ":" + aFixedValue[i].Text() + "<br>");
  }

  page_kit::OpenConnection(objConn, strConn, bDebug, page_.objResponse);
  GetRequestValue();
}

void DNA::SetCodeSQL(const Variant& StrCodeSQL) {
  strItemCodeSQL = StrCodeSQL.ToString();
  aCodeSQL.Assign(Split(strItemCodeSQL, ";"));
  if (bDebug) {
    WriteTrace("##调试信息:SetCodeSQL OK!<br>" + kCrLf);
    WriteTrace("#CodeSQL:" + strItemCodeSQL + "<br>" + kCrLf);
  }
}

}  // namespace corvane
