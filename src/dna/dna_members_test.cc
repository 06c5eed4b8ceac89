// DNA as a scripting host sees it: dispatch ids, properties, and a method with reference arguments.
#include <gtest/gtest.h>

#include "dna/dna_test_support.h"

namespace corvane::testing {

TEST(DNAClass, DispatchIds) {
  const ClassInfo& c = *FindClass("{EAB29593-9DE1-41EB-B481-708F425344A5}");
  // The properties keep their published ids: 0x40030006 to 0x40030009, then 0x40030014 to 0x40030018.
  const std::vector<std::string> properties = Split(
      "strAction nAccessLevel nPage nPageSize strItemKeyName nItemKeyValue strItemEnglish strItemChinese "
      "strItemCodeSQL",
      " ");
  for (int32_t i = 0; i < 9; ++i) EXPECT_EQ(c.DispIdOf(properties[i]), (i < 4 ? 0x40030006 : 0x40030010) + i);
  // Methods are 0x60030000 + their place among all the class's procedures; the private ones ("-") take
  // a place but are no members, so a script cannot call them.
  const std::vector<std::string> procedures = Split(
      "OnStartPage OnEndPage DebugMode -WriteTrace -OpenConnection -CloseConnection OpenDNA CloseDNA "
      "SetCodeSQL -GetRequestValue -GetParam DispList -GetPageBar -GetListHeader -GetListRows "
      "-GetListEnd DispSetColumns GetList GetRs DispForm GetCodeName SelectForm SetDefaultItem "
      "-ReadFieldTypes Insert Update Delete search SetTitle SetDispStyle DispMenu",
      " ");
  for (int32_t i = 0; i < 31; ++i)
    EXPECT_EQ(c.DispIdOf(Replace(procedures[i], "-", "")), procedures[i][0] == '-' ? -1 : 0x60030000 + i);
  EXPECT_EQ(c.members.size(), 30u);
}

TEST(DNAClass, PropertiesConvertOnWrite) {
  Object dna = CreateObject("corvane.DNA"), rs = CreateObject("ADODB.Recordset");
  // clang-format off
  const std::tuple<const char*, Variant, Variant, int> cases[] = {
      {"nPage", Variant("12"), Variant(int16_t{12}), 0},
      {"nAccessLevel", Variant(2.5), Variant(int16_t{2}), 0},  // rounded half to even
      {"nPageSize", Variant(40000), Variant(int16_t{0}), 6},   // a failed write keeps the value
      {"nPage", Variant("x"), Variant(int16_t{12}), 13},
      {"strAction", Variant::Null(), Variant(""), 94},
  };
  // clang-format on
  for (const auto& [name, put, get, error] : cases) {
    EXPECT_EQ(ErrorNumber([&] { dna.Put(name, put); }), error) << name;
    EXPECT_EQ(dna.Get(name), get) << name;
  }
  dna.PutRef("nItemKeyValue", Variant(rs));  // the key value may be an object too
  EXPECT_EQ(dna.Get("nItemKeyValue").ToObject(), rs);
}

TEST_F(DnaTable, LateBoundOpenDNATrimsTheCallersSql) {
  DnaPage p(session);
  Args open{Variant(db.connectionString), Variant("  select id,name from staff  "), Variant("")};
  p.obj.Invoke("opendna", open);  // names match in any case
  EXPECT_EQ(open[1], Variant("select id,name from staff"));
}

}  // namespace corvane::testing
