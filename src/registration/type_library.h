// The type library that describes the five component classes.
#pragma once

#include <string_view>

namespace corvane {

inline constexpr std::string_view kTypeLibraryName = "corvane";
inline constexpr std::string_view kTypeLibraryId = "{103e74ae-b907-42b4-89b2-78fa5a63d531}";
inline constexpr int kTypeLibraryMajor = 1;
inline constexpr int kTypeLibraryMinor = 0;

}  // namespace corvane
