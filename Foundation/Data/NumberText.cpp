#include "Foundation/Data/NumberText.h"

#include "Foundation/Platform/DoubleRounding.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

namespace {

constexpr std::string_view kNan = "nan:";
constexpr int kDigits = 16;
constexpr TuInt64 kSign = TuInt64(1) << 63;
constexpr TuInt64 kInfinity = TuInt64(0x7FF) << 52; // what is above that, but for the sign, is no number

template <class Number, class... Options>
bool parseWhole(std::string_view text, Number& value, Options... options)
{
  const char* const end = text.data() + text.size();
  Number number;
  const auto [stop, error] = std::from_chars(text.data(), end, number, options...);
  if (error != std::errc() || stop != end)
    return false;
  value = number;
  return true;
}

} // namespace

std::string_view textOf(const double& value, Tdigits& digits) noexcept
{
  if (std::isnan(value))
  {
    TuInt64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    char* at = std::copy(kNan.begin(), kNan.end(), digits);
    for (int i = kDigits; i-- != 0;)
      *at++ = "0123456789abcdef"[bits >> i * 4 & 15];
    return {digits, at};
  }
  const bool isShortWhole = std::fabs(value) < 1e15 && value == std::trunc(value);
  const auto format = isShortWhole ? std::chars_format::fixed : std::chars_format::general;
  return {digits, std::to_chars(digits, digits + sizeof digits, value, format).ptr};
}

bool parseNumber(std::string_view text, double& value) noexcept
{
  if (text.substr(0, kNan.size()) == kNan)
  {
    const std::string_view digits = text.substr(kNan.size());
    TuInt64 bits;
    if (digits.size() != kDigits || !parseWhole(digits, bits, 16) || (bits & ~kSign) <= kInfinity)
      return false;
    std::memcpy(&value, &bits, sizeof bits);
    return true;
  }
  [[maybe_unused]] const Platform::DoubleRounding rounding;
  double number;
  if (!parseWhole(text, number) || std::isnan(number))
    return false;
  value = number;
  return true;
}

bool parseNumber(std::string_view text, Tint32& value) noexcept
{
  return parseWhole(text, value);
}
