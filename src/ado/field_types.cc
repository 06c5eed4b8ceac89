#include "ado/field_types.h"

#include <array>
#include <string>
#include <utility>

#include "corvane/ado.h"
#include "corvane/dates.h"

namespace corvane::ado::detail {

namespace {

// The first word of a declared type, upper-cased: "nvarchar(50)" -> "NVARCHAR".
std::string BaseName(std::string_view declared) {
  size_t i = 0;
  while (i < declared.size() && declared[i] == ' ') ++i;
  std::string name;
  for (; i < declared.size(); ++i) {
    char c = declared[i];
    if (c == ' ' || c == '(') break;
    name += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return name;
}

constexpr std::array<std::pair<std::string_view, int>, 30> kTypes{{
    {"INT", adInteger},
    {"INTEGER", adInteger},
    {"MEDIUMINT", adInteger},
    {"BIGINT", adInteger},
    {"SMALLINT", adSmallInt},
    {"TINYINT", adSmallInt},
    {"BIT", adBoolean},
    {"BOOL", adBoolean},
    {"BOOLEAN", adBoolean},
    {"REAL", adDouble},
    {"FLOAT", adDouble},
    {"DOUBLE", adDouble},
    {"DECIMAL", adNumeric},
    {"NUMERIC", adNumeric},
    {"MONEY", adNumeric},
    {"SMALLMONEY", adNumeric},
    {"DATETIME", adDBTimeStamp},
    {"DATE", adDBTimeStamp},
    {"TIMESTAMP", adDBTimeStamp},
    {"SMALLDATETIME", adDBTimeStamp},
    {"DATETIME2", adDBTimeStamp},
    {"CHAR", adWChar},
    {"NCHAR", adWChar},
    {"TEXT", adLongVarWChar},
    {"NTEXT", adLongVarWChar},
    {"CLOB", adLongVarWChar},
    {"BLOB", adLongVarBinary},
    {"IMAGE", adLongVarBinary},
    {"VARBINARY", adLongVarBinary},
    {"BINARY", adLongVarBinary},
}};

bool FitsLong(int64_t v) { return v >= INT32_MIN && v <= INT32_MAX; }

std::string AsText(const StoredValue& value) {
  if (auto* i = std::get_if<int64_t>(&value)) return std::to_string(*i);
  if (auto* d = std::get_if<double>(&value)) return Variant(*d).ToString();
  if (auto* t = std::get_if<std::string_view>(&value)) return std::string(*t);
  auto bytes = std::get<std::span<const uint8_t>>(value);
  return std::string(bytes.begin(), bytes.end());
}

// A value by what it is, whatever the column declares.
Variant Natural(const StoredValue& value) {
  if (auto* i = std::get_if<int64_t>(&value)) return Variant(*i);
  if (auto* d = std::get_if<double>(&value)) return Variant(*d);
  if (auto* t = std::get_if<std::string_view>(&value)) return Variant(*t);
  auto bytes = std::get<std::span<const uint8_t>>(value);
  return Variant::FromBytes(Bytes(bytes.begin(), bytes.end()));
}

}  // namespace

int TypeCodeOfDeclaredType(std::string_view declared) {
  std::string base = BaseName(declared);
  if (base.empty()) return adEmpty;
  if (base.starts_with("BIGINT")) return adInteger;
  if (base.starts_with("BOOL")) return adBoolean;
  for (const auto& [name, code] : kTypes)
    if (base == name) return code;
  return adVarWChar;
}

int TypeCodeOfStoredValue(const StoredValue& value) {
  if (auto* i = std::get_if<int64_t>(&value)) return FitsLong(*i) ? adInteger : adDouble;
  if (std::holds_alternative<double>(value)) return adDouble;
  if (std::holds_alternative<std::span<const uint8_t>>(value)) return adLongVarBinary;
  return adVarWChar;
}

Variant FieldValue(int typeCode, const StoredValue& value) {
  if (std::holds_alternative<StoredNull>(value)) return Variant::Null();
  const int64_t* integer = std::get_if<int64_t>(&value);
  const double* real = std::get_if<double>(&value);
  switch (typeCode) {
    case adSmallInt:
      if (integer && *integer >= INT16_MIN && *integer <= INT16_MAX)
        return Variant(static_cast<int16_t>(*integer));
      return Natural(value);
    case adBoolean:
      if (integer) return Variant(*integer != 0);
      if (real) return Variant(*real != 0);
      return Natural(value);
    case adDouble:
      if (integer) return Variant(static_cast<double>(*integer));
      return Natural(value);
    case adDBTimeStamp:
      if (auto* text = std::get_if<std::string_view>(&value))
        if (std::optional<double> serial = ParseDateText(*text)) return Variant::FromDate(*serial);
      return Natural(value);
    case adWChar:
    case adVarWChar:
    case adLongVarWChar: return Variant(AsText(value));
    case adLongVarBinary:
      if (auto* text = std::get_if<std::string_view>(&value))
        return Variant::FromBytes(Bytes(text->begin(), text->end()));
      return Natural(value);
    default:  // adInteger, adNumeric and columns without a declared type
      return Natural(value);
  }
}

}  // namespace corvane::ado::detail
