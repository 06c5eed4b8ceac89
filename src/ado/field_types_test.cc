// The declared-type table of corvane/ado.h. The values under each type: the data-layer suites.
#include "ado/field_types.h"

#include <gtest/gtest.h>

#include "corvane/ado.h"

namespace corvane::ado::detail {
TEST(FieldTypes, DeclaredTypeCodes) {
  const std::pair<const char*, int> cases[] = {{"INT", 3},
                                               {"integer", 3},
                                               {"BigInt", 3},
                                               {"MEDIUMINT", 3},
                                               {"smallint", 2},
                                               {"TINYINT", 2},
                                               {"bit", 11},
                                               {"BOOLEAN", 11},
                                               {"real", 5},
                                               {"FLOAT", 5},
                                               {"double precision", 5},
                                               {"decimal(10,2)", 131},
                                               {"NUMERIC", 131},
                                               {"money", 131},
                                               {"datetime", 135},
                                               {"DATE", 135},
                                               {"timestamp", 135},
                                               {"smalldatetime", 135},
                                               {"char(10)", 130},
                                               {"NCHAR(2)", 130},
                                               {"text", 203},
                                               {"NTEXT", 203},
                                               {"clob", 203},
                                               {"blob", 205},
                                               {"image", 205},
                                               {"varbinary(16)", 205},
                                               {"varchar(50)", 202},
                                               {"NVARCHAR (50)", 202},
                                               {"geometry", 202},
                                               {"", 0}};
  for (const auto& [declared, code] : cases) EXPECT_EQ(TypeCodeOfDeclaredType(declared), code) << declared;
}

}  // namespace corvane::ado::detail
