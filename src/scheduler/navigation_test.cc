#include <gtest/gtest.h>

#include <ctime>

#include "scheduler/scheduler_fixture.h"

namespace corvane::scheduling::testing {
namespace {

// Fixes the clock at 08:30:15.5 local time, so Timer is 30615.5.
class Navigation : public SchedulerTest {
 protected:
  void SetUp() override {
    SchedulerTest::SetUp();
    SetClock([] {
      std::tm t{};
      t.tm_year = 2026 - 1900;
      t.tm_mon = 10;
      t.tm_mday = 2;
      t.tm_hour = 8;
      t.tm_min = 30;
      t.tm_sec = 15;
      t.tm_isdst = -1;
      return std::chrono::system_clock::from_time_t(std::mktime(&t)) + std::chrono::milliseconds(500);
    });
  }
  void TearDown() override {
    SetClock(nullptr);
    SchedulerTest::TearDown();
  }
};

std::string Link(const std::string& target, const std::string& closing) {
  return "<a href='/cal/p.asp?personID=5&dt=" + target + "&t=30615.5&rnd=77" + closing;
}

TEST_F(Navigation, MonthSelectStepsByMonthsAndYearsClampingTheDay) {
  scheduler& s = Open("/cal/p.asp");
  Variant dt = Variant::Date(2024, 1, 31), id(5);
  EXPECT_EQ(s.DispMonthSelect(dt, id).Text(),
            Link("2023-01-31", "'>&nbsp;<img src='../Images/jian3.gif'  border='0' align='absmiddle'></a>") +
                Link("2023-12-31", "'>&nbsp;<img src='../Images/jian1.gif'  border='0' align='absmiddle'>&nbsp;</a>") +
                "2024年1月" +
                Link("2024-02-29", "'>&nbsp;<img src='../Images/jian2.gif'  border='0' align='absmiddle'></a>") +
                Link("2025-01-31", "'>&nbsp;<img src='../Images/jian4.gif'  border='0' align='absmiddle'>&nbsp;</a>"));
}

TEST_F(Navigation, WeekSelectStepsByWeeksAndMonthsAndNumbersTheWeek) {
  scheduler& s = Open("/cal/p.asp");
  Variant dt("2026-11-30"), id(5);  // a Monday: still week 5
  EXPECT_EQ(s.DispWeekSelect(dt, id).Text(),
            Link("2026-10-30", "'>&nbsp;<img src='../Images/jian3.gif'  border='0' align='absmiddle'></a> ") +
                Link("2026-11-23", "'>&nbsp;<img src='../Images/jian1.gif'  border='0' align='absmiddle'>&nbsp;</a> ") +
                "2026年11月第5周" +
                Link("2026-12-07", "'>&nbsp;<img src='../Images/jian2.gif'  border='0' align='absmiddle'></a> ") +
                Link("2026-12-30", "'>&nbsp;<img src='../Images/jian4.gif'  border='0' align='absmiddle'>&nbsp;</a> "));
}

TEST_F(Navigation, SelectsLinkToTheStrURLPropertyAndKeepTheTime) {
  scheduler& s = Open("/cal/p.asp");
  s.strURL = "other.asp";
  Variant dt = Variant::Date(2026, 6, 1, 9, 15), id(5);
  std::string week = s.DispWeekSelect(dt, id).Text();
  EXPECT_EQ(week.rfind("<a href='other.asp?personID=5&dt=2026-05-01 09:15:00&t=30615.5&rnd=77'>", 0), 0u);
  EXPECT_NE(week.find("2026年6月第1周"), std::string::npos);
}

// The tab strip, line by line, for a link built from `page` and `label`.
std::string Strip(const std::vector<std::string>& cells) {
  std::vector<std::string> lines{"<table width='100%' border='0' cellpadding='0' cellspacing='0'>"};
  lines.insert(lines.end(), cells.begin(), cells.end());
  for (const char* end : {"<th width='100%'>&nbsp;</th>", "</tr>", "</table>"}) lines.push_back(end);
  return CrLfLines(lines);
}

const std::string kParams = "5&dt=2026-11-04&t=30615.5& rnd=77";
const std::string kSchhImage2 = "<th  class='schh'><img src='../Images/niuban.gif' width='22' height='22'></th>";
const std::string kTd2Image = "<th class='td2'><img src='../Images/niuban.gif' width='22' height='22'></th>";
const std::string kTd2Image2 = "<th  class='td2'><img src='../Images/niuban.gif' width='22' height='22'></th>";
const std::string kSchhImage = "<th class='schh'><img src='../Images/niuban.gif' width='22' height='22'></th>";

TEST_F(Navigation, SwitchForEveryPage) {
  scheduler& s = Open();
  auto monthStrip = [](const std::string& active, const std::string& page) {
    return Strip({active, kSchhImage2,
                  "<th class='td2' nowrap><a href='" + page + "?personID=" + kParams + "'> &nbsp;周计划</a></th>",
                  kTd2Image});
  };
  auto weekStrip = [](const std::string& page, const std::string& active) {
    return Strip({"<tr><th nowrap class='td2'><a href='" + page + "?personID=" + kParams +
                      "'>&nbsp;月计划</a></th>",
                  kTd2Image2, active, kSchhImage});
  };
  struct { const char* which; std::string expected; } cases[] = {
      {"m", monthStrip("<tr><th nowrap class='schh'>&nbsp;月计划</th>", "personWeek.asp")},
      {"lm", monthStrip("<tr><th nowrap class='schh'>&nbsp;月汇总</th>", "leaderWeek.asp")},
      {"lm2", monthStrip("<tr><th nowrap class='schh'>&nbsp;月汇总</th>", "leader2Week.asp")},
      {"w", weekStrip("personMonth.asp", "<th class='schh' nowrap> &nbsp;周计划</th>")},
      {"lw", weekStrip("leaderMonth.asp", "<th class='schh' nowrap> &nbsp;周汇总</th>")},
      {"lw2", weekStrip("leader2Month.asp", "<th class='schh' nowrap> &nbsp;周汇总</th>")},
      {"M", ""},
      {"", ""},
      {"w ", ""},
  };
  Variant dt("2026-11-04"), id(5);
  for (auto& c : cases) {
    Variant which(c.which);
    EXPECT_EQ(s.DispSwitch(dt, id, which).Text(), c.expected) << c.which;
  }
  for (Variant other : {Variant(), Variant::Null(), Variant(1)}) EXPECT_EQ(s.DispSwitch(dt, id, other).Text(), "");
}

TEST_F(Navigation, ScriptOpensTheEditorOnOwnCalendarOnly) {
  scheduler& s = Open();
  const std::string head = "<script language='javascript'>\r\n function manage(dt){\r\n";
  const std::string tail = "}\r\n</script>\r\n";
  Variant own(1), ownText("1"), other(2), nul = Variant::Null();
  const std::string line = "     location.href='manage.asp?personID=1&dt='+dt+'&rnd=77';";
  EXPECT_EQ(s.DispScript(own).Text(), head + line + tail);
  EXPECT_EQ(s.DispScript(ownText).Text(), head + line + tail);
  EXPECT_EQ(s.DispScript(other).Text(), head + tail);
  EXPECT_EQ(s.DispScript(nul).Text(), head + tail);
  Variant junk("me");
  EXPECT_THROW(s.DispScript(junk), Error);
}

TEST_F(Navigation, StyleSheetForTypeOneOrNoType) {
  scheduler& s = Open();
  for (Variant type : {Variant(1), Variant(""), Variant(), Variant(1.0), Variant("1"), Variant(" 1 ")}) {
    size_t before = page->Writes().size();
    s.SetDispStyle(type);
    ASSERT_EQ(page->Writes().size(), before + 1) << DebugString(type);
    std::vector<std::string> lines = Lines(page->Writes().back());
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ(lines[0], "<style>");
    EXPECT_EQ(lines[1], ".tbl { background-color: #FFFFFF; FONT-FAMILY: '宋体'; width:100%;BORDER: black double;}");
    EXPECT_EQ(lines[4], ".lable{background-color:#718EB7;FONT-FAMILY: '宋体';color:#FFFFFF;}");
    EXPECT_EQ(lines[14], ".page a{ width:100%;color:black;FONT-SIZE: small;text-decoration: none}");
    EXPECT_EQ(lines[15], "</style>");
  }
  for (Variant type : {Variant(2), Variant("2"), Variant::Null()}) {
    s.SetDispStyle(type);
    EXPECT_EQ(page->Writes().back(), "") << DebugString(type);
  }
  // Text that is no number cannot be compared with the type number.
  Variant word("abc");
  EXPECT_EQ(corvane::testing::ErrorNumber([&] { s.SetDispStyle(word); }), 13);
}

}  // namespace
}  // namespace corvane::scheduling::testing
