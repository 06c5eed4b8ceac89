// Numbers as text, the platform's way: what CDbl accepts and how CStr writes a Single or a Double.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// Parses a numeric text: blanks around it, a sign, digits with an optional decimal point, an optional
// exponent ("1.5E+3"), or "&H1F" / "&O17" (hex and octal, 32-bit). nullopt when it is not a number
// (the empty text is not).
std::optional<double> ParseNumberText(std::string_view text);

// Writes a number with at most `digits` significant digits and no trailing zeros: 0.5 -> "0.5",
// 3 -> "3", -0.25 -> "-0.25", 1E+20 -> "1E+20", 1E-05 -> "1E-05".
std::string FormatNumber(double value, int digits);

}  // namespace corvane
