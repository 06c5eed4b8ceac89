// OpenDNA's reading of the page's SQL, and the request and session state that the views share.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {

TEST_F(DnaTable, OpenDNAWithoutFromFilterOrKeyTracesThenFailsInDebugMode) {
  DnaPage p(session);
  p.dna.DebugMode();
  // No "from": all after "select "; one field: no key; one sort term: none in the session; no filter:
  // the trace loop over the filter's terms fails before the connection is opened.
  EXPECT_EQ(ErrorNumber([&] { p.Open(db, "select name order by name", ""); }), 9);
  EXPECT_EQ(Replace(Replace(p.Take(), kTraceSpan, ""), "</span>", ""),
            "##调试信息:进入调试模式<br>\r\n##调试信息:OpenDNA<br>\r\n#表　　名:<br>\r\n#条　　件:<br>\r\n"
            "#英文字段:name order by name<br>\r\n#中文字段:name order by name<br>\r\n#主键字段:<br>\r\n"
            "#编码检索:name order by name<br>\r\n#缺省排序:name:: <br>\r\n");
}

TEST_F(DnaTable, RequestStateOverManyViewsOfOneSession) {
  // The query (the first on another page), then action|key|page|page size|order|order2|columns|search.
  // clang-format off
  const std::pair<const char*, const char*> steps[] = {
      {"page=3", "list||3|20|||id,name,dept|dept=1 "},  // no default columns there
      // Back on the page: the default sort that OpenDNA stored is cleared again; a page keeps the search.
      {"page=1", "list||1|20|||id,name|dept=1 "},
      {"page=2", "list||2|20|pay||id,name|dept=1 "},   // from then on; two terms fill only the first
      {"order=name", "list||1|20|name|pay|id,name|"},  // the default sort becomes the second
      {"order=name&pageSize=0", "list||1|1|name DESC |pay|id,name|"},
      {"order=name&pageSize=7", "list||1|7|name|pay|id,name|"},
      {"order=dept", "list||1|7|dept|name|id,name|"},
      {"order=de", "list||1|7|dept DESC |name|id,name|"},  // containment toggles "dept"
      {"action=setcol2&id=1'2&choseItem=id&choseItem=dept", "setcol2|1`2|1|7|dept DESC |name|id, dept|"},
  };
  // clang-format on
  session.Set("strSearch", Variant("dept=1 "));
  for (const auto& [query, expected] : steps) {
    const bool other = &query == &steps[0].first;
    DnaPage p(session, query, "", other ? "/other.asp" : "/staff.asp");
    p.Open(db, "select id,name,dept FROM staff order by pay,id");  // keywords in any case
    if (!other) p.dna.SetDefaultItem(Variant("id,name"));
    std::string got = p.dna.strAction + "|" + p.dna.nItemKeyValue.Text() + "|" + std::to_string(p.dna.nPage);
    for (const char* key : {"nPageSize", "strOrder", "strOrder2", "strItemChose", "strSearch"})
      got += "|" + session.Get(key).Text();
    EXPECT_EQ(got, expected) << query;
  }
  EXPECT_EQ(ErrorNumber([&] { DnaPage(session, "page=abc").Open(db); }), 13);
}

}  // namespace corvane::testing
