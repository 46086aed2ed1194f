#include "Foundation/String/TnameString.h"

#include <algorithm>
#include <charconv>
#include <climits>

namespace {

bool isDigit(char c)
{
  return c >= '0' && c <= '9';
}

bool beginsNumber(char c)
{
  return c >= '1' && c <= '9';
}

struct Number
{
  TuInt32 packed = 0;
  std::ptrdiff_t length = 0;
};

// Reads the digits at \p text and goes behind them.
Number readNumber(const char*& text)
{
  const char* const first = text;
  Number number;
  for (; isDigit(*text); ++text)
    number.packed = number.packed << 4 | TuInt32(*text - '0');
  number.length = text - first;
  return number;
}

int difference(Tint64 a, Tint64 b)
{
  return int(std::clamp<Tint64>(a - b, -INT_MAX, INT_MAX));
}

} // namespace

Tstring TnameString::baseString() const noexcept
{
  const std::string_view base = baseView();
  return base.size() == length() ? Tstring(*this) : Tstring(base);
}

std::string_view TnameString::baseView() const noexcept
{
  std::string_view text = *this;
  while (!text.empty() && isDigit(text.back()))
    text.remove_suffix(1);
  return text;
}

TuInt32 TnameString::versionNumber() const noexcept
{
  TuInt32 version = 0;
  const std::from_chars_result result = std::from_chars(begin() + baseView().size(), end(), version);
  return result.ec == std::errc::result_out_of_range ? 0xFFFFFFFF : version;
}

int TnameString::strnumcmp(const char* a, const char* b) noexcept
{
  a = a ? a : "";
  b = b ? b : "";
  for (;;)
  {
    if (beginsNumber(*a) && beginsNumber(*b))
    {
      const Number left = readNumber(a), right = readNumber(b);
      if (left.packed != right.packed)
        return difference(left.packed, right.packed);
      if (left.length != right.length)
        return difference(left.length, right.length);
      continue;
    }
    if (*a != *b)
      return static_cast<signed char>(*a) - static_cast<signed char>(*b);
    if (!*a)
      return 0;
    ++a;
    ++b;
  }
}
