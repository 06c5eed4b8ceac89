// The request that drives the list and the form, and the session state it keeps between views:
// sort order, page size, chosen columns and the search text.
#include <string>

#include "corvane/host.h"
#include "corvane/text.h"
#include "dna/dna.h"
#include "page_kit/page_kit.h"

namespace corvane {

using page_kit::kCrLf;

// The form's value first, then the query string's; every "'" becomes "`" so that the value can stand
// between single quotes in SQL.
Variant DNA::GetParam(std::string_view name) {
  host::Request& request = page_.Request();
  Variant v = request.Form(name);
  if (v.Text().empty()) v = request.QueryString(name);
  std::string value = Replace(v.Text(), "'", "`");
  if (bDebug) WriteTrace("#Res:" + std::string(name) + "=" + value + "<br>" + kCrLf);
  return Variant(std::move(value));
}

void DNA::GetRequestValue() {
  host::SessionObject& session = Session();
  strURL = page_.Request().ServerVariables("URL").Text();
  // Arriving from another page drops the sort order (the URL is stored at page end).
  if (strURL != session.Get("strURL").Text()) {
    session.Set("strOrder", Variant(""));
    session.Set("strOrder2", Variant(""));
  }

  strAction = GetParam("action").ToString();
  if (strAction.empty()) strAction = "list";

  Variant v = GetParam("page");
  if (!v.Text().empty()) {
    nPage = v.ToInteger();
  } else {
    // A request without a page number starts a fresh search.
    nPage = 1;
    session.Set("strSearch", Variant(""));
  }

  v = GetParam("pageSize");
  if (!v.Text().empty()) {
    int16_t size = v.ToInteger();
    session.Set("nPageSize", Variant(size <= 0 ? int16_t{1} : size));
  } else if (session.Get("nPageSize").Text().empty()) {
    session.Set("nPageSize", Variant(int16_t{20}));
  }

  // A click on a column heading: the same column toggles its direction, another one becomes the
  // primary sort and the old primary the secondary. The test is plain containment, so "id" also
  // matches a sort on "personID".
  v = GetParam("order");
  if (!v.Text().empty()) {
    std::string order = session.Get("strOrder").Text();
    if (InStr(order, Trim(v.Text())) > 0) {
      if (InStr(order, "DESC") > 0)
        session.Set("strOrder", v);
      else
        session.Set("strOrder", Variant(order + " DESC "));
    } else {
      session.Set("strOrder2", session.Get("strOrder"));
      session.Set("strOrder", v);
    }
  }

  v = GetParam("choseItem");
  if (!v.Text().empty()) session.Set("strItemChose", v);
  if (session.Get("strItemChose").Text().empty() || session.Get("strURL").Text() != strURL)
    session.Set("strItemChose", Variant(strItemEnglish));

  for (int32_t i = 0; i <= aEnglish.UBound(); ++i) aValue[i] = GetParam(aEnglish[i]);
  if (!strItemKeyName.empty()) nItemKeyValue = GetParam(strItemKeyName);

  if (bDebug) {
    WriteTrace("##调试信息:GetRequestValue OK!<br>" + kCrLf);
    WriteTrace("#Querystring:" + page_.Request().QueryString() + "<br>" + kCrLf);
    WriteTrace("#TotalSize:" + std::to_string(page_.Request().TotalBytes()) + "<br>" + kCrLf);
    WriteTrace("#Session(strItemChose):" + session.Get("strItemChose").Text() + "<br>" + kCrLf);
    WriteTrace("#strURL:" + strURL + "<br>" + kCrLf);
  }
}

}  // namespace corvane
