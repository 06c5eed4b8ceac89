// The column-choice and page-size form of the list. The checked boxes post several "choseItem"
// values, which the request joins with ", "; the list then tests each column by containment.
#include <string>

#include "corvane/host.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "page_kit/page_kit.h"

namespace corvane {

void DNA::DispSetColumns() {
  host::Response& out = Out();
  out.Write("<Form name='" + strAction + "' method='post' action='" + strURL + "'>" + page_kit::kCrLf);
  out.Write("<input type='hidden' name='action' value='list'>");
  const std::string chose = SessionText("strItemChose");
  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) {
    out.Write(aChinese[i] + ": <input type='checkbox' name='choseItem' value='" + aEnglish[i] + "' ");
    if (InStr(chose, aEnglish[i]) > 0) out.Write("checked");
    out.Write(">" + page_kit::kCrLf);
  }
  out.Write("<br>每页行数：<input type='text' name='pageSize' size=3 value='" + SessionText("nPageSize") +
            "'><br>" + page_kit::kCrLf);
  out.Write("<input type='submit'  value='设定显示列'></Form>" + page_kit::kCrLf);
  if (bDebug) WriteTrace("##调试信息:DispSetColumns OK!<br>" + page_kit::kCrLf);
}

}  // namespace corvane
