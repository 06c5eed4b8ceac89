// Values on every backend: what is written comes back the same, Null apart from empty text, Chinese
// text, dates with and without a time, and column names spelt as the statement writes them.
#include "ado/data_layer_fixture.h"

namespace corvane::ado::testing {

using RoundTripTest = DataLayerTest;

TEST_P(RoundTripTest, NullEmptyChineseAndDatesComeBackAsWritten) {
  Run({"create table v(id int, txt varchar(40), at timestamp null)",
       "insert v(id,txt,at) values(1,null,null),(2,'',null),(3,'中文 “引号” 𠀀 end','2026-11-24 00:00:00'),"
       "(4,'it''s','1999-12-31 23:59:59')"});
  const std::tuple<Variant, Variant> expected[] = {{Variant::Null(), Variant::Null()},
                                                   {"", Variant::Null()},
                                                   {"中文 “引号” 𠀀 end", Variant::Date(2026, 11, 24)},
                                                   {"it's", Variant::Date(1999, 12, 31, 23, 59, 59)}};
  Recordset rs;
  rs.Open("select personText=txt, atTime=at from v order by id", Variant(cs));
  EXPECT_EQ(rs.FieldName(0), "personText");
  EXPECT_EQ(rs.FieldName(1), "atTime");
  for (const auto& [text, at] : expected) {
    ASSERT_FALSE(rs.Eof());
    EXPECT_EQ(rs.Field("PERSONTEXT"), text);
    EXPECT_EQ(rs.Field("ATTIME"), at);
    rs.MoveNext();
  }
  EXPECT_EQ(Ids("select id from v where txt like '%引号%'"), std::vector<int32_t>{3});
}

CORVANE_ON_EVERY_BACKEND(RoundTripTest);

}  // namespace corvane::ado::testing
