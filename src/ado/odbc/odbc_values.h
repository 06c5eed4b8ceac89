// ODBC column types as ADO type codes, and a column of the current row as a Variant.
//
//   SQL_SMALLINT, SQL_TINYINT -> 2 adSmallInt     SQL_INTEGER -> 3 adInteger     SQL_BIGINT -> 20 adBigInt
//   SQL_DECIMAL, SQL_NUMERIC -> 131 adNumeric      SQL_REAL, SQL_FLOAT, SQL_DOUBLE -> 5 adDouble
//   SQL_BIT -> 11 adBoolean                        dates, times, timestamps -> 135 adDBTimeStamp
//   SQL_(W)CHAR -> 130 adWChar   SQL_(W)LONGVARCHAR -> 203 adLongVarWChar   binaries -> 205
//   SQL_(W)VARCHAR and anything else -> 202 adVarWChar
// Values follow the SQLite driver's rules (field_types.h): integers are Long, or Double beyond 32
// bits; adSmallInt gives Integer; decimals give Double; NULL is Null under every type.
#pragma once

#include "ado/odbc/odbc_handle.h"
#include "corvane/variant.h"

namespace corvane::ado::detail {

int TypeCodeOfSqlType(SQLSMALLINT sqlType);

// Column `column` (1-based) of the statement's current row, read with SQLGetData. Raises
// Error::Database when the driver fails.
Variant ReadColumn(const OdbcHandle& stmt, SQLUSMALLINT column, SQLSMALLINT sqlType, int typeCode,
                   const std::string& secret);

}  // namespace corvane::ado::detail
