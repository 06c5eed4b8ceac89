// The language's own error numbers and texts: run-time errors the interpreter raises and the
// compile errors the parser reports (1001-1058), as the platform's script engine words them.
#pragma once

#include <cstdint>
#include <string_view>

#include "corvane/error.h"

namespace corvane::script {

// Run-time errors the interpreter raises itself (the runtime's Error factories cover the others).
constexpr int32_t kOutOfStackSpace = 28;
constexpr int32_t kFixedArray = 10;
constexpr int32_t kDivisionByZero = 11;
constexpr int32_t kNotDefined = 35;  // Sub or Function not defined
constexpr int32_t kForNotInitialized = 92;
constexpr int32_t kWrongArgumentCount = 450;
constexpr int32_t kVariableUndefined = 500;
constexpr int32_t kIllegalAssignment = 501;
constexpr int32_t kClassNotDefined = 506;
// A page stopped for running longer than its time limit (E_FAIL).
constexpr int32_t kTimedOut = -2147467259;

// Compile errors.
enum CompileError : int32_t {
  kSyntaxError = 1002,
  kExpectedColon = 1003,
  kExpectedLParen = 1005,
  kExpectedRParen = 1006,
  kExpectedRBracket = 1007,
  kExpectedIdentifier = 1010,
  kExpectedEquals = 1011,
  kExpectedIf = 1012,
  kExpectedTo = 1013,
  kExpectedEnd = 1014,
  kExpectedFunction = 1015,
  kExpectedSub = 1016,
  kExpectedThen = 1017,
  kExpectedWend = 1018,
  kExpectedLoop = 1019,
  kExpectedNext = 1020,
  kExpectedCase = 1021,
  kExpectedSelect = 1022,
  kExpectedExpression = 1023,
  kExpectedStatement = 1024,
  kExpectedEndOfStatement = 1025,
  kExpectedIntegerConstant = 1026,
  kExpectedWhileUntil = 1027,
  kExpectedWhileUntilEnd = 1028,
  kExpectedWith = 1029,
  kIdentifierTooLong = 1030,
  kInvalidNumber = 1031,
  kInvalidCharacter = 1032,
  kUnterminatedString = 1033,
  kInvalidMe = 1037,
  kLoopWithoutDo = 1038,
  kInvalidExit = 1039,
  kInvalidForVariable = 1040,
  kNameRedefined = 1041,
  kMustBeFirst = 1042,
  kParenthesesOnSub = 1044,
  kExpectedLiteral = 1045,
  kExpectedIn = 1046,
  kExpectedClass = 1047,
  kMustBeInClass = 1048,
  kExpectedLetSetGet = 1049,
  kExpectedProperty = 1050,
  kInconsistentPropertyArgs = 1051,
  kMultipleDefaults = 1052,
  kInitTerminateArgs = 1053,
  kPropertyNeedsArgument = 1054,
  kUnexpectedNext = 1055,
  kDefaultOnlyOnGet = 1056,
  kDefaultMustBePublic = 1057,
};

// The description of an error number the language knows ("Type mismatch"); "Unknown runtime error"
// for any other number.
std::string_view ErrorDescription(int32_t number);
// An error of that number with its description.
Error LanguageError(int32_t number);

}  // namespace corvane::script
