// Recordset on every backend: opening and closing, moving, fields and their types.
#include "ado/data_layer_fixture.h"

namespace corvane::ado::testing {

class RecordsetTest : public DataLayerTest {
 protected:
  void Seed() override {
    Run(
        {"create table person(personID int primary key, personName varchar(20), dutyID int, s smallint, "
         "d double precision, n decimal(8,2), ts timestamp, dd date, c char(2), tx text)",
         "insert person(personID,personName,dutyID,s,d,n,ts,dd,c,tx) "
         "values(1,'张三',2,4,2.5,3.25,'2026-11-02 08:30:00','2026-11-02','ab','x')",
         "insert person(personID,personName,dutyID) values(2,'李四',null),(3,'王五',2)"});
    c = Connect();
  }
  std::shared_ptr<Connection> c;
};

TEST_P(RecordsetTest, OpensOnAConnectionOrAStringWithTheCursorTypesItKnows) {
  const std::string sql = "select personName from person where personID=3";
  for (const Variant& on : {Variant(cs), Variant(Object(c))})
    for (int cursorType : {-1, 0, 1, 2, 3}) {
      Recordset rs;
      rs.Open(sql, on, cursorType);
      EXPECT_EQ(rs.Field(0), Variant("王五")) << cursorType;
    }
  Recordset rs;
  for (int cursorType : {-2, 4}) EXPECT_EQ(ErrorNumber([&] { rs.Open(sql, c, cursorType); }), 3001);
  for (const Variant& on : {Variant(), Variant(5)}) EXPECT_EQ(ErrorNumber([&] { rs.Open(sql, on); }), 3709);
  EXPECT_EQ(ErrorNumber([&] { rs.Open(sql, std::make_shared<Connection>()); }), 3709);
}

TEST_P(RecordsetTest, ClosedOpenAndTheSourceAsGiven) {
  Recordset rs;
  EXPECT_EQ(ErrorNumber([&] { rs.Eof(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("a"); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.Close(); }), 3704);
  EXPECT_EQ(ErrorNumber([&] { rs.Open("select nope from person", c); }), Error::kDatabaseError);
  rs.Open(" delete person where personID=3", c);  // run, and no rows to stay open on
  EXPECT_EQ(rs.Source(), "");                     // closed
  const std::string sql = "select top 1 Who=personName from person order by personID desc";
  rs.Open(sql, c);
  EXPECT_EQ(ErrorNumber([&] { rs.Open(sql, c); }), 3705);
  EXPECT_EQ(rs.Source(), sql);  // the database got it adapted
  EXPECT_EQ(rs.Field("who"), Variant("李四"));
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());  // top 1
}

TEST_P(RecordsetTest, MovingAndFieldsByNameInAnyCaseOrByIndex) {
  const char* sql = "select personID, personName, 'first' as a, 'second' as A from person order by personID";
  Recordset rs, beside;
  rs.Open(sql, c, adOpenKeyset);
  rs.MoveNext();
  beside.Open(sql, c);  // the same query side by side
  EXPECT_EQ(beside.Field(0), Variant(int32_t{1}));
  EXPECT_EQ(rs.Field("PERSONNAME"), Variant("李四"));
  for (const char* name : {"a", "A"})
    EXPECT_EQ(rs.Field(name), Variant("first")) << name;  // the first of equal names
  for (int index : {-1, 4}) EXPECT_EQ(ErrorNumber([&] { rs.Field(index); }), 3265);
  rs.MoveFirst();  // from the middle: the query runs again from its start
  EXPECT_EQ(Ids(rs), (std::vector<int32_t>{1, 2, 3}));
  EXPECT_FALSE(rs.Bof());
  EXPECT_EQ(ErrorNumber([&] { rs.MoveNext(); }), 3021);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("personID"); }), 3021);
  EXPECT_EQ(ErrorNumber([&] { rs.Field("nope"); }), 3265);  // the name is checked first
  EXPECT_EQ(rs.FieldType("personID"), adInteger);           // types are known at EOF
}

TEST_P(RecordsetTest, TypesFromTheDeclaredColumnTypesWhateverTheValueAndNullUnderEach) {
  const std::tuple<const char*, int, Variant> cases[] = {
      // Variants compare their types too
      {"dutyID", adInteger, int32_t{2}},
      {"s", adSmallInt, int16_t{4}},
      {"d", adDouble, 2.5},
      {"n", adNumeric, 3.25},
      {"ts", adDBTimeStamp, Variant::Date(2026, 11, 2, 8, 30, 0)},
      {"dd", adDBTimeStamp, Variant::Date(2026, 11, 2)},
      {"c", adWChar, "ab"},
      {"tx", adLongVarWChar, "x"}};
  Recordset rs;
  rs.Open("select * from person order by personID", c);
  for (const auto& [name, type, value] : cases)
    EXPECT_EQ(std::pair(rs.FieldType(name), rs.Field(name)), std::pair(type, value)) << name;
  rs.MoveNext();  // 李四: Null in each of them
  for (const auto& [name, type, value] : cases)
    EXPECT_EQ(std::pair(rs.FieldType(name), rs.Field(name)), std::pair(type, Variant::Null())) << name;
}

CORVANE_ON_EVERY_BACKEND(RecordsetTest);

}  // namespace corvane::ado::testing
