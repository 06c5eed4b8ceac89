// OpenDNA's reading of the page's SQL, and the request and session state it sets up.
#include <gtest/gtest.h>

#include <vector>

#include "dna/dna_test_support.h"

namespace corvane::testing {
namespace {

const std::string kSpan = "<span id=debugID style='display:none'>";

// The messages of the hidden trace lines in `output`, in order.
std::vector<std::string> TraceMessages(const std::string& output) {
  std::vector<std::string> messages;
  for (size_t at = output.find(kSpan); at != std::string::npos; at = output.find(kSpan, at)) {
    at += kSpan.size();
    size_t end = output.find("</span>", at);
    messages.push_back(output.substr(at, end - at));
  }
  return messages;
}

struct SqlCase {
  std::string sql;
  std::string english, key, table, where;
  std::string orderLine;                   // the "#缺省排序:" trace line
  std::vector<std::string> fixedLines;     // the "限定字段:" lines
  bool failsWithoutFilter = false;
};

TEST(OpenDNA, TakesTheSqlApart) {
  const std::vector<SqlCase> cases = {
      {"select a,b,c from t where x=1 and y=2 order by a,b", "a,b,c", "a", "t", "where x=1 and y=2",
       "#缺省排序:a,b:a: <br>\r\n", {"限定字段:x:1<br>", "限定字段:y:2<br>"}},
      // Keywords are found in any case, but "order by " and "where " are removed case-sensitively.
      {"  SELECT id,name FROM staff WHERE dept=3 ORDER BY name,id,dept  ", "id,name", "id", "staff",
       "WHERE dept=3", "#缺省排序:ORDER BY name,id,dept:ORDER BY name: id<br>\r\n",
       {"限定字段::<br>", "限定字段:dept:3<br>"}},
      // Blanks around "=" split into useless terms.
      {"select a,b from t where x = 1", "a,b", "a", "t", "where x = 1", "#缺省排序::: <br>\r\n",
       {"限定字段::<br>", "限定字段::<br>", "限定字段::<br>"}},
      // One field: no key; one sort term: nothing reaches the session; no filter: the debug loop fails.
      {"select name from t order by name", "name", "", "t", "", "#缺省排序:name:: <br>\r\n", {}, true},
      // No "from": everything after the first seven characters, and no table.
      {"select x", "x", "", "", "", "#缺省排序::: <br>\r\n", {}, true},
  };
  for (const SqlCase& c : cases) {
    SCOPED_TRACE(c.sql);
    StaffDatabase db;
    host::Session session;
    session.Set("strURL", Variant("/staff.asp"));  // a return to the same page keeps the sort
    DnaPage p(session, "");
    p.dna().DebugMode();
    if (c.failsWithoutFilter) {
      try {
        p.Open(db, c.sql, "");
        FAIL() << "the trace loop over the filter terms should fail";
      } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 9);
      }
    } else {
      p.Open(db, c.sql, "");
    }
    std::vector<std::string> m = TraceMessages(p.Take());
    ASSERT_GE(m.size(), 9u);
    EXPECT_EQ(m[2], "#表　　名:" + c.table + "<br>\r\n");
    EXPECT_EQ(m[3], "#条　　件:" + c.where + "<br>\r\n");
    EXPECT_EQ(m[4], "#英文字段:" + c.english + "<br>\r\n");
    EXPECT_EQ(m[5], "#中文字段:" + c.english + "<br>\r\n");  // no captions: the English names
    EXPECT_EQ(m[6], "#主键字段:" + c.key + "<br>\r\n");
    EXPECT_EQ(m[8], c.orderLine);
    std::vector<std::string> fixed(m.begin() + 9, m.begin() + 9 + std::min(m.size() - 9, c.fixedLines.size()));
    EXPECT_EQ(fixed, c.fixedLines);
    EXPECT_EQ(p.dna().strItemEnglish, c.english);
    EXPECT_EQ(p.dna().strItemCodeSQL, Replace(c.english, ",", ";"));
    // A failed OpenDNA never opened the connection.
    EXPECT_EQ(p.page().Output().find("打开数据库") == std::string::npos, c.failsWithoutFilter);
  }
}

TEST(OpenDNA, TrimsTheCallersVariableLateBound) {
  StaffDatabase db;
  host::Session session;
  host::Page page(host::PageRequest{.url = "/staff.asp"}, session, corvane::testing::LibraryHost());
  Object dna = page.Server().CreateObject("corvane.DNA");
  Args args{Variant(db.connectionString), Variant("  select id,name,dept from staff  "), Variant("编号,姓名,部门")};
  dna.Invoke("OpenDNA", args);
  EXPECT_EQ(args[1], Variant("select id,name,dept from staff"));
  EXPECT_EQ(args[0], Variant(db.connectionString));
  EXPECT_EQ(dna.Get("strItemKeyName"), Variant("id"));
  EXPECT_EQ(dna.Get("strItemChinese"), Variant("编号,姓名,部门"));
  EXPECT_EQ(dna.Get("strAction"), Variant("list"));
  EXPECT_EQ(dna.Get("nPage"), Variant(int16_t{1}));
  dna.Invoke("CloseDNA");
}

TEST(OpenDNA, DefaultSortReachesTheSessionOnlyFromTwoTerms) {
  struct Case {
    std::string order;
    Variant before, strOrder, strOrder2;
  };
  const std::vector<Case> cases = {
      {"name", Variant(), Variant(), Variant()},
      {"name,id", Variant(), Variant("name"), Variant()},
      {"name , id , dept", Variant(), Variant("name"), Variant("id")},
      {"name,id,dept", Variant("pay"), Variant("pay"), Variant()},  // an earlier sort stays
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.order);
    StaffDatabase db;
    host::Session session;
    session.Set("strURL", Variant("/staff.asp"));
    if (!c.before.IsEmpty()) session.Set("strOrder", c.before);
    DnaPage p(session, "");
    p.Open(db, "select id,name,dept from staff order by " + c.order);
    EXPECT_EQ(session.Get("strOrder"), c.strOrder);
    EXPECT_EQ(session.Get("strOrder2"), c.strOrder2);
  }
}

TEST(OpenDNA, ArrivingFromAnotherPageClearsTheDefaultSortAgain) {
  StaffDatabase db;
  host::Session session;
  {
    DnaPage p(session, "");
    p.Open(db, "select id,name,dept from staff order by name,id");
    EXPECT_EQ(session.Get("strOrder"), Variant(""));  // the URL differs: this view is unsorted
    p.End();
  }
  DnaPage again(session, "");
  again.Open(db, "select id,name,dept from staff order by name,id");
  EXPECT_EQ(session.Get("strOrder"), Variant("name"));
}

TEST(RequestState, PageAndPageSize) {
  StaffDatabase db;
  host::Session session;
  session.Set("strURL", Variant("/staff.asp"));
  session.Set("strSearch", Variant("dept=1 "));
  {
    DnaPage p(session, "page=3");
    p.Open(db);
    EXPECT_EQ(p.dna().nPage, 3);
    EXPECT_EQ(p.dna().strAction, "list");
    EXPECT_EQ(session.Get("strSearch"), Variant("dept=1 "));
    EXPECT_EQ(session.Get("nPageSize"), Variant(int16_t{20}));  // a first visit stores 20
  }
  {
    DnaPage p(session, "action=listall&pageSize=0");
    p.Open(db);
    EXPECT_EQ(p.dna().nPage, 1);
    EXPECT_EQ(p.dna().strAction, "listall");
    EXPECT_EQ(session.Get("strSearch"), Variant(""));  // no page number: a fresh search
    EXPECT_EQ(session.Get("nPageSize"), Variant(int16_t{1}));
  }
  {
    DnaPage p(session, "pageSize=7");
    p.Open(db);
    EXPECT_EQ(session.Get("nPageSize"), Variant(int16_t{7}));
  }
  for (auto [query, number] : std::vector<std::pair<std::string, int>>{
           {"page=abc", 13}, {"pageSize=x", 13}, {"page=40000", 6}, {"pageSize=32768", 6}}) {
    SCOPED_TRACE(query);
    DnaPage p(session, query);
    try {
      p.Open(db);
      FAIL();
    } catch (const Error& e) {
      EXPECT_EQ(e.Number(), number);
    }
  }
}

TEST(RequestState, ColumnHeadingClicksToggleAndShiftTheSort) {
  StaffDatabase db;
  host::Session session;
  session.Set("strURL", Variant("/staff.asp"));
  auto click = [&](const std::string& column) {
    DnaPage p(session, "page=1&order=" + column);
    p.Open(db);
    return std::make_pair(session.Get("strOrder").Text(), session.Get("strOrder2").Text());
  };
  using P = std::pair<std::string, std::string>;
  EXPECT_EQ(click("name"), P("name", ""));
  EXPECT_EQ(click("name"), P("name DESC ", ""));
  EXPECT_EQ(click("name"), P("name", ""));
  EXPECT_EQ(click("dept"), P("dept", "name"));
  // Containment, not equality: "id" toggles a sort on "deptid".
  session.Set("strOrder", Variant("deptid"));
  EXPECT_EQ(click("id"), P("deptid DESC ", "name"));
}

TEST(RequestState, QuotesArriveAsBackticksAndFormComesFirst) {
  StaffDatabase db;
  host::Session session;
  DnaPage p(session, "action=update&id=9", "id=1'2&choseItem=id&choseItem=name");
  p.Open(db);
  EXPECT_EQ(p.dna().nItemKeyValue, Variant("1`2"));
  EXPECT_EQ(p.dna().strAction, "update");
  // The URL differs from the session's (first visit): the choice falls back to all columns.
  EXPECT_EQ(session.Get("strItemChose"), Variant("id,name,dept"));
  p.End();

  DnaPage again(session, "page=1", "choseItem=id&choseItem=name");
  again.Open(db);
  EXPECT_EQ(session.Get("strItemChose"), Variant("id, name"));
}

TEST(RequestState, ChineseValuesInTheDefaultCodePage) {
  StaffDatabase db;
  host::Session session;
  // "张" in GBK is D5 C5.
  host::Page page(host::PageRequest{.url = "/staff.asp", .queryString = "action=search2&id=%D5%C5"}, session, corvane::testing::LibraryHost());
  auto dna = page.Server().CreateObject("corvane.DNA").As<DNA>();
  Variant conn(db.connectionString), sql(kStaffSQL), captions(kStaffCaptions);
  dna->OpenDNA(conn, sql, captions);
  EXPECT_EQ(dna->nItemKeyValue, Variant("张"));
}

}  // namespace
}  // namespace corvane::testing
