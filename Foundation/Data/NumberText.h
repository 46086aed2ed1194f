/// \file
/// Numbers as text that is the same everywhere and reads back bit for bit. Internal to the library.
///
/// A double is the shortest decimal form that reads back as the same one ("0.1", "1e+300"; whole numbers below 1e15
/// without an exponent: "100000", "-0"), "inf" or "-inf"; one that is no number is "nan:" and the 16 hexadecimal digits
/// of its bits. The locale does not matter.

#pragma once

#include "Foundation/Platform/Types.h"
#include <string_view>

/// Room for the text of a number.
using Tdigits = char[32];

/// The text of \p value, in \p digits. The value is taken by its address: to pass it along could change its bits when
/// it is no number.
std::string_view textOf(const double& value, Tdigits& digits) noexcept;

/// The number that is the whole of \p text, without blanks or a '+'. False, with \p value untouched, for any other
/// text and what is out of the type's range; of a double also below it.
bool parseNumber(std::string_view text, double& value) noexcept;
bool parseNumber(std::string_view text, Tint32& value) noexcept;
