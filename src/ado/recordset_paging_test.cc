// Recordset paging on every backend. That a page is read without the rows before it is the driver's
// part: see sqlite/sqlite_driver_test.cc.
#include "ado/data_layer_fixture.h"

namespace corvane::ado::testing {

class PagingTest : public DataLayerTest {
 protected:
  void Seed() override {
    Run({"create table t(id int)", "insert t(id) values(1),(2),(3),(4),(5),(6),(7),(8),(9),(10),(11)"});
  }
};

TEST_P(PagingTest, PagesCountsAndPositions) {
  Recordset rs;
  rs.Open("select id from t order by id desc", Connect(), adOpenKeyset);
  rs.SetAbsolutePage(2);  // ten rows a page until told otherwise
  EXPECT_EQ(Ids(rs), std::vector<int32_t>{1});
  rs.SetPageSize(4);
  EXPECT_EQ(rs.RecordCount(), 11);
  EXPECT_EQ(rs.PageCount(), 3);
  rs.SetAbsolutePage(2);
  EXPECT_EQ(rs.Field(0), Variant(int32_t{7}));
  for (int row = 0; row < 4; ++row) rs.MoveNext();
  EXPECT_EQ(rs.AbsolutePage(), 3);  // the page follows the current row
  EXPECT_EQ(Ids(rs), (std::vector<int32_t>{3, 2, 1}));
  EXPECT_EQ(rs.AbsolutePage(), -3);  // adPosEOF
  rs.SetAbsolutePage(4);             // past the last row
  EXPECT_TRUE(rs.Eof() && !rs.Bof());
  for (int32_t bad : {0, -1}) EXPECT_EQ(ErrorNumber([&] { rs.SetAbsolutePage(bad); }), 3001);
  EXPECT_EQ(ErrorNumber([&] { rs.SetPageSize(0); }), 3001);
  Run({"insert t(id) values(12)"});
  EXPECT_EQ(rs.RecordCount(), 11);  // counted once, when first asked
}

TEST_P(PagingTest, AStatementWithItsOwnLimitAndAnEmptyResult) {
  Recordset top, none;
  top.Open("select top 6 id from t order by id", Variant(cs), adOpenKeyset);
  top.SetPageSize(4);
  EXPECT_EQ(top.PageCount(), 2);
  top.SetAbsolutePage(2);
  EXPECT_EQ(Ids(top), (std::vector<int32_t>{5, 6}));  // paged within its own limit
  none.Open("select id from t where id > 100", Variant(cs), adOpenStatic);
  EXPECT_TRUE(none.Eof() && none.Bof());
  EXPECT_EQ(none.RecordCount() + none.PageCount(), 0);
}

CORVANE_ON_EVERY_BACKEND(PagingTest);

}  // namespace corvane::ado::testing
