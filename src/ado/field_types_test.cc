#include "ado/field_types.h"

#include <gtest/gtest.h>

#include "corvane/ado.h"

namespace corvane::ado::detail {
namespace {

TEST(FieldTypes, DeclaredTypeCodes) {
  const std::pair<const char*, int> cases[] = {
      {"INT", 3}, {"integer", 3}, {"BigInt", 3}, {"MEDIUMINT", 3}, {"smallint", 2}, {"TINYINT", 2},
      {"bit", 11}, {"BOOLEAN", 11}, {"real", 5}, {"FLOAT", 5}, {"double precision", 5},
      {"decimal(10,2)", 131}, {"NUMERIC", 131}, {"money", 131}, {"datetime", 135}, {"DATE", 135},
      {"timestamp", 135}, {"smalldatetime", 135}, {"char(10)", 130}, {"NCHAR(2)", 130},
      {"text", 203}, {"NTEXT", 203}, {"clob", 203}, {"blob", 205}, {"image", 205},
      {"varbinary(16)", 205}, {"varchar(50)", 202}, {"NVARCHAR (50)", 202}, {"geometry", 202},
      {"", 0},
  };
  for (const auto& [declared, code] : cases) EXPECT_EQ(TypeCodeOfDeclaredType(declared), code) << declared;
}

TEST(FieldTypes, UndeclaredColumnsFollowTheStoredValue) {
  EXPECT_EQ(TypeCodeOfStoredValue(int64_t{7}), adInteger);
  EXPECT_EQ(TypeCodeOfStoredValue(int64_t{1} << 40), adDouble);
  EXPECT_EQ(TypeCodeOfStoredValue(2.5), adDouble);
  EXPECT_EQ(TypeCodeOfStoredValue(std::string_view("x")), adVarWChar);
  EXPECT_EQ(TypeCodeOfStoredValue(StoredNull{}), adVarWChar);
  EXPECT_EQ(FieldValue(adEmpty, int64_t{7}), Variant(int32_t{7}));
  EXPECT_EQ(FieldValue(adEmpty, int64_t{1} << 40), Variant(double(int64_t{1} << 40)));
  EXPECT_EQ(FieldValue(adEmpty, std::string_view("x")), Variant("x"));
}

TEST(FieldTypes, ValuesUnderEachType) {
  EXPECT_EQ(FieldValue(adInteger, int64_t{-5}), Variant(int32_t{-5}));
  EXPECT_EQ(FieldValue(adInteger, int64_t{5000000000}), Variant(5000000000.0));
  EXPECT_EQ(FieldValue(adSmallInt, int64_t{12}), Variant(int16_t{12}));
  EXPECT_EQ(FieldValue(adSmallInt, int64_t{70000}), Variant(int32_t{70000}));
  EXPECT_EQ(FieldValue(adBoolean, int64_t{1}), Variant(true));
  EXPECT_EQ(FieldValue(adBoolean, int64_t{0}), Variant(false));
  EXPECT_EQ(FieldValue(adDouble, int64_t{3}), Variant(3.0));
  EXPECT_EQ(FieldValue(adVarWChar, int64_t{42}), Variant("42"));
  EXPECT_EQ(FieldValue(adLongVarWChar, std::string_view("长文本")), Variant("长文本"));
  const uint8_t bytes[] = {0, 255};
  EXPECT_EQ(FieldValue(adLongVarBinary, std::span<const uint8_t>(bytes)).ToBytes(), (Bytes{0, 255}));
  EXPECT_EQ(FieldValue(adLongVarBinary, std::string_view("ab")).ToBytes(), (Bytes{'a', 'b'}));
  for (int type : {0, 2, 3, 5, 11, 131, 135, 202, 203, 205})
    EXPECT_TRUE(FieldValue(type, StoredNull{}).IsNull()) << type;
}

TEST(FieldTypes, DateTextBecomesADateUnlessItIsNotOne) {
  EXPECT_EQ(FieldValue(adDBTimeStamp, std::string_view("2026-11-02")), Variant::Date(2026, 11, 2));
  EXPECT_EQ(FieldValue(adDBTimeStamp, std::string_view("2026-11-02 08:30:00")),
            Variant::Date(2026, 11, 2, 8, 30, 0));
  EXPECT_EQ(FieldValue(adDBTimeStamp, std::string_view("soon")), Variant("soon"));
}

}  // namespace
}  // namespace corvane::ado::detail
