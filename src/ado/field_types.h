// Field types and values: the ADO type code of a declared column type, and the Variant a stored value
// becomes under that code. Driver-neutral: a driver hands over what the database stored.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

#include "corvane/variant.h"

namespace corvane::ado::detail {

// A value as the database keeps it: NULL, an integer, a real, text (UTF-8) or bytes.
struct StoredNull {};
using StoredValue = std::variant<StoredNull, int64_t, double, std::string_view, std::span<const uint8_t>>;

// The ADO type code of a declared type ("INT", "nvarchar(50)", "DATETIME"; any case); adEmpty (0) when
// nothing is declared. The table is in corvane/ado.h.
int TypeCodeOfDeclaredType(std::string_view declared);

// The type code of a column without a declared type, from the value it holds now: 3 for integers that
// fit 32 bits, 5 for other numbers, 205 for bytes, 202 for text and NULL.
int TypeCodeOfStoredValue(const StoredValue& value);

// The field value of `value` in a column of type `typeCode` (0: no declared type). NULL is Null under
// every type. Integers are Long, or Double beyond 32 bits; adSmallInt gives Integer when it fits;
// adBoolean gives True for anything but 0; adDBTimeStamp parses the stored text as the locale's date
// text (a text that does not parse stays text); text types give text, also for numbers stored in them.
Variant FieldValue(int typeCode, const StoredValue& value);

}  // namespace corvane::ado::detail
