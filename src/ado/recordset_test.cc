#include <gtest/gtest.h>

#include "corvane/ado.h"
#include "corvane/error.h"
#include "test_support.h"

namespace corvane::ado {
namespace {

using corvane::testing::ScratchDatabase;

using corvane::testing::ErrorNumber;

class RecordsetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Run({"create table person(personID integer primary key, personName varchar(20), dutyID int, "
             "born datetime, note text)",
             "insert into person values(1,'张三',2,'1980-05-04','a')",
             "insert into person values(2,'李四',1,'1990-01-02 08:30:00',null)",
             "insert into person values(3,'王五',2,'not a date','c')"});
    connection_->Open(db_.connectionString);
  }

  ScratchDatabase db_;
  std::shared_ptr<Connection> connection_ = std::make_shared<Connection>();
};

TEST(RecordsetTypes, TypeCodesAndValuesForEachDeclaredType) {
  ScratchDatabase db;
  db.Run({"create table t(i int, n integer, b bigint, s smallint, f bit, r real, d decimal(8,2), "
          "m money, dt datetime, dd date, c char(4), nc nchar(2), v varchar(9), nv nvarchar(9), "
          "tx text, nt ntext, bl blob, im image, x)",
          "insert into t values(1, 2, 5000000000, 4, 1, 2.5, 3.25, 7, '2026-11-02 08:30:00', "
          "'2026-11-02', 'ab', 'cd', 'ef', '中文', 'long', 'longer', x'00ff', x'01', 9)"});
  struct Expect {
    const char* name;
    int type;
    Variant value;
  };
  const Expect expected[] = {
      {"i", 3, int32_t{1}},         {"n", 3, int32_t{2}},        {"b", 3, 5000000000.0},
      {"s", 2, int16_t{4}},         {"f", 11, true},             {"r", 5, 2.5},
      {"d", 131, 3.25},             {"m", 131, int32_t{7}},      {"dt", 135, Variant::Date(2026, 11, 2, 8, 30, 0)},
      {"dd", 135, Variant::Date(2026, 11, 2)}, {"c", 130, "ab"}, {"nc", 130, "cd"},
      {"v", 202, "ef"},             {"nv", 202, "中文"},          {"tx", 203, "long"},
      {"nt", 203, "longer"},        {"bl", 205, Variant::FromBytes({0, 255})},
      {"im", 205, Variant::FromBytes({1})}, {"x", 3, int32_t{9}},
  };
  Recordset rs;
  rs.Open("select * from t", Variant(db.connectionString));
  ASSERT_EQ(rs.FieldCount(), static_cast<int>(std::size(expected)));
  for (const Expect& e : expected) {
    EXPECT_EQ(rs.FieldType(e.name), e.type) << e.name;
    if (e.value.IsBytes())  // byte arrays compare by content
      EXPECT_EQ(rs.Field(e.name).ToBytes(), e.value.ToBytes()) << e.name;
    else
      EXPECT_EQ(rs.Field(e.name), e.value) << e.name;
  }
}

TEST(RecordsetTypes, NullIsNullUnderEveryTypeAndExpressionsTakeTheirValuesType) {
  ScratchDatabase db;
  db.Run({"create table t(i int, dt datetime, v varchar(9), tx text, bl blob, r real)",
          "insert into t values(null, null, null, null, null, null)"});
  Recordset rs;
  rs.Open("select *, count(*) as n, 1.5 as q, 'x' as s, 1 << 40 as big from t", Variant(db.connectionString));
  for (const char* name : {"i", "dt", "v", "tx", "bl", "r"}) EXPECT_TRUE(rs.Field(name).IsNull()) << name;
  EXPECT_EQ(rs.FieldType("i"), adInteger);  // the declared type stays, whatever the value
  EXPECT_EQ(rs.FieldType("n"), adInteger);
  EXPECT_EQ(rs.Field("n"), Variant(int32_t{1}));
  EXPECT_EQ(rs.FieldType("q"), adDouble);
  EXPECT_EQ(rs.FieldType("s"), adVarWChar);
  EXPECT_EQ(rs.FieldType("big"), adDouble);
  EXPECT_EQ(rs.Field("big"), Variant(1099511627776.0));
}

TEST_F(RecordsetTest, DatesAreReadAsDatesAndOtherTextStaysText) {
  Recordset rs;
  rs.Open("select born from person order by personID", connection_);
  EXPECT_EQ(rs.Field("born"), Variant::Date(1980, 5, 4));
  EXPECT_EQ(rs.Field("born").Type(), vtDate);
  rs.MoveNext();
  EXPECT_EQ(rs.Field("born"), Variant::Date(1990, 1, 2, 8, 30, 0));
  rs.MoveNext();
  EXPECT_EQ(rs.Field("born"), Variant("not a date"));
}

TEST_F(RecordsetTest, FieldsByNameInAnyCaseOrByIndex) {
  Recordset rs;
  rs.Open("select personID, personName, person.dutyID from person where personID=2", connection_);
  EXPECT_EQ(rs.Field("personname"), Variant("李四"));
  EXPECT_EQ(rs.Field("PERSONNAME"), Variant("李四"));
  EXPECT_EQ(rs.Field(1), Variant("李四"));
  EXPECT_EQ(rs.Field("DutyID"), Variant(int32_t{1}));
  EXPECT_EQ(rs.FieldName(2), "dutyID");
  EXPECT_EQ(ErrorNumber([&] { rs.Field("nope"); }), 3265);
  EXPECT_EQ(ErrorNumber([&] { rs.Field(3); }), 3265);
  EXPECT_EQ(ErrorNumber([&] { rs.Field(-1); }), 3265);
}

TEST_F(RecordsetTest, RepeatedNamesFindTheFirstColumn) {
  Recordset rs;
  rs.Open("select 'first' as a, 'second' as A", connection_);
  EXPECT_EQ(rs.Field("a"), Variant("first"));
  EXPECT_EQ(rs.Field(1), Variant("second"));
}

TEST_F(RecordsetTest, MovingToEofAndPastIt) {
  Recordset rs;
  rs.Open("select personID from person order by personID", connection_, adOpenKeyset);
  EXPECT_FALSE(rs.Bof());
  std::vector<int32_t> ids;
  while (!rs.Eof()) {
    ids.push_back(rs.Field(0).ToLong());
    rs.MoveNext();
  }
  EXPECT_EQ(ids, (std::vector<int32_t>{1, 2, 3}));
  EXPECT_FALSE(rs.Bof());
  EXPECT_EQ(ErrorNumber([&] { rs.MoveNext(); }), 3021);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("personID"); }), 3021);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("nope"); }), 3265);  // the name is checked first
  EXPECT_EQ(rs.FieldType("personID"), adInteger);          // types are known at EOF
  rs.MoveFirst();
  EXPECT_EQ(rs.Field(0), Variant(int32_t{1}));
}

TEST_F(RecordsetTest, AnEmptyResultIsAtBofAndEof) {
  Recordset rs;
  rs.Open("select * from person where personID=99", connection_);
  EXPECT_TRUE(rs.Eof());
  EXPECT_TRUE(rs.Bof());
  EXPECT_EQ(rs.FieldType("born"), adDBTimeStamp);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("born"); }), 3021);
}

TEST_F(RecordsetTest, ClosedAndReopened) {
  Recordset rs;
  EXPECT_EQ(ErrorNumber([&] { rs.Eof(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.Close(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("a"); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.RecordCount(); }), 3704);
  rs.Open("select personID from person", connection_);
  EXPECT_EQ(ErrorNumber([&] { rs.Open("select 1", connection_); }), 3705);
  rs.Close();
  EXPECT_FALSE(rs.IsOpen());
  EXPECT_EQ(ErrorNumber([&] { rs.MoveNext(); }), 3704);
  rs.Open("select personName from person where personID=3", connection_);
  EXPECT_EQ(rs.Field(0), Variant("王五"));
}

TEST_F(RecordsetTest, OpensWithAConnectionStringOrAConnectionObject) {
  Recordset a;
  a.Open("select count(*) from person", Variant(db_.connectionString), adOpenStatic);
  EXPECT_EQ(a.Field(0), Variant(int32_t{3}));
  Recordset b;
  b.Open("select top 1 personName from person order by personID desc", Variant(Object(connection_)));
  EXPECT_EQ(b.Field("personName"), Variant("王五"));
  Recordset c;
  EXPECT_EQ(ErrorNumber([&] { c.Open("select 1", Variant(int32_t{5})); }), 3709);
  EXPECT_EQ(ErrorNumber([&] { c.Open("select 1", connection_, 7); }), 3001);
}

TEST_F(RecordsetTest, ComponentDialectReachesTheDatabaseAdapted) {
  Recordset rs;
  rs.Open("select Who=personName,Duty=dutyID from person where dutyID=2 and personID<=3 order by personID",
          connection_);
  EXPECT_EQ(rs.Field("Who"), Variant("张三"));
  EXPECT_EQ(rs.Field("duty"), Variant(int32_t{2}));
  EXPECT_EQ(rs.FieldType("Duty"), adInteger);  // an aliased column keeps its declared type
}

TEST_F(RecordsetTest, ARejectedQueryRaisesAndLeavesTheRecordsetClosed) {
  Recordset rs;
  try {
    rs.Open("select nope from person", connection_);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), Error::kDatabaseError);
    EXPECT_EQ(e.Description(), "no such column: nope");
  }
  EXPECT_FALSE(rs.IsOpen());
}

TEST_F(RecordsetTest, AStatementWithoutRowsRunsAndLeavesTheRecordsetClosed) {
  Recordset rs;
  rs.Open(" delete person where personID=3", connection_);
  EXPECT_FALSE(rs.IsOpen());
  rs.Open("select count(*) from person", connection_);
  EXPECT_EQ(rs.Field(0), Variant(int32_t{2}));
}

TEST_F(RecordsetTest, TwoRecordsetsOnTheSameQueryRunSideBySide) {
  Recordset a, b;
  const char* sql = "select personID from person order by personID";
  a.Open(sql, connection_);
  a.MoveNext();
  b.Open(sql, connection_);
  EXPECT_EQ(a.Field(0), Variant(int32_t{2}));
  EXPECT_EQ(b.Field(0), Variant(int32_t{1}));
}

}  // namespace
}  // namespace corvane::ado
