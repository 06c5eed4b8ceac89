// Date literals written in code: #2026-11-23#, #2026/11/23#, #11/23/2026#, each with an optional
// time ("#11/23/2026 10:30:00 PM#", "#2026-11-23 22:30#"), or a time alone (#10:30#, on 1899-12-30).
#pragma once

#include <optional>
#include <string_view>

namespace corvane::script {

// The serial of the literal's text (between the '#'s); nullopt when it is not a valid date.
std::optional<double> ParseDateLiteral(std::string_view text);

}  // namespace corvane::script
