// The language's named constants. The numeric ones are Longs; the texts are vbCr, vbLf, vbCrLf,
// vbNewLine (CR LF), vbTab, vbFormFeed, vbVerticalTab, vbNullChar (one U+0000) and vbNullString (the
// empty text).
#include <string>
#include <unordered_map>

#include "corvane/text.h"
#include "script/builtins.h"

namespace corvane::script {
namespace {

struct NumericConstant {
  std::string_view name;
  int32_t value;
};

// clang-format off
constexpr NumericConstant kNumbers[] = {
    {"vbTrue", -1}, {"vbFalse", 0}, {"vbUseDefault", -2},
    {"vbBinaryCompare", 0}, {"vbTextCompare", 1}, {"vbDatabaseCompare", 2},
    {"vbUseSystemDayOfWeek", 0}, {"vbSunday", 1}, {"vbMonday", 2}, {"vbTuesday", 3}, {"vbWednesday", 4},
    {"vbThursday", 5}, {"vbFriday", 6}, {"vbSaturday", 7},
    {"vbUseSystem", 0}, {"vbFirstJan1", 1}, {"vbFirstFourDays", 2}, {"vbFirstFullWeek", 3},
    {"vbGeneralDate", 0}, {"vbLongDate", 1}, {"vbShortDate", 2}, {"vbLongTime", 3}, {"vbShortTime", 4},
    {"vbObjectError", -2147221504},
    {"vbEmpty", 0}, {"vbNull", 1}, {"vbInteger", 2}, {"vbLong", 3}, {"vbSingle", 4}, {"vbDouble", 5},
    {"vbCurrency", 6}, {"vbDate", 7}, {"vbString", 8}, {"vbObject", 9}, {"vbError", 10}, {"vbBoolean", 11},
    {"vbVariant", 12}, {"vbDataObject", 13}, {"vbDecimal", 14}, {"vbByte", 17}, {"vbArray", 8192},
    {"vbOKOnly", 0}, {"vbOKCancel", 1}, {"vbAbortRetryIgnore", 2}, {"vbYesNoCancel", 3}, {"vbYesNo", 4},
    {"vbRetryCancel", 5}, {"vbCritical", 16}, {"vbQuestion", 32}, {"vbExclamation", 48},
    {"vbInformation", 64}, {"vbDefaultButton1", 0}, {"vbDefaultButton2", 256}, {"vbDefaultButton3", 512},
    {"vbDefaultButton4", 768}, {"vbApplicationModal", 0}, {"vbSystemModal", 4096},
    {"vbMsgBoxHelpButton", 16384}, {"vbMsgBoxSetForeground", 65536}, {"vbMsgBoxRight", 524288},
    {"vbMsgBoxRtlReading", 1048576},
    {"vbOK", 1}, {"vbCancel", 2}, {"vbAbort", 3}, {"vbRetry", 4}, {"vbIgnore", 5}, {"vbYes", 6}, {"vbNo", 7},
    {"vbBlack", 0x000000}, {"vbRed", 0x0000FF}, {"vbGreen", 0x00FF00}, {"vbYellow", 0x00FFFF},
    {"vbBlue", 0xFF0000}, {"vbMagenta", 0xFF00FF}, {"vbCyan", 0xFFFF00}, {"vbWhite", 0xFFFFFF},
};
// clang-format on

struct TextConstant {
  std::string_view name;
  std::string_view value;
};

constexpr TextConstant kTexts[] = {
    {"vbCr", "\r"},          {"vbLf", "\n"},
    {"vbCrLf", "\r\n"},      {"vbNewLine", "\r\n"},
    {"vbTab", "\t"},         {"vbFormFeed", "\f"},
    {"vbVerticalTab", "\v"}, {"vbNullChar", std::string_view("\0", 1)},
    {"vbNullString", ""},
};

using Table = std::unordered_map<std::string, Variant>;

Table MakeTable() {
  Table table;
  for (const NumericConstant& c : kNumbers) table.emplace(LCase(c.name), Variant(c.value));
  for (const TextConstant& c : kTexts) table.emplace(LCase(c.name), Variant(c.value));
  return table;
}

}  // namespace

const Variant* FindConstant(std::string_view name) {
  static const Table table = MakeTable();
  auto it = table.find(LCase(name));
  return it == table.end() ? nullptr : &it->second;
}

}  // namespace corvane::script
