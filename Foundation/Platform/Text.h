/// \file
/// What the platform knows about texts: collation and regular expressions. Internal to the library.

#pragma once

#include <string_view>

namespace Platform {

/// Below, at or above 0 as \p left stands before, at or behind \p right in the current locale's order, upper and lower
/// case being the same. Without memory the order is that of the bytes.
int compareIgnoringCase(const char* left, const char* right) noexcept;

/// The position of \p part in \p text, -1 without one.
long find(std::string_view text, std::string_view part) noexcept;

/// Whether the extended regular expression \p pattern is found in \p text. groups[0] becomes the part found, and each
/// further one what the next parentheses took, null when they took no part. False for what is no expression, and
/// without memory.
bool findRegexp(const char* pattern, const char* text, std::string_view (&groups)[10]) noexcept;

} // namespace Platform
