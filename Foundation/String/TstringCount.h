/// \file
/// TstringCount: a text and a number that goes with it.

#pragma once

#include "Foundation/String/Tstring.h"

#include <ostream>

/// Equal when the texts are, whatever the counts.
class TstringCount
{
public:
  TstringCount() noexcept = default;
  TstringCount(const char* text, unsigned int count) noexcept
    : fText(text)
    , fCount(count)
  {
  }

  const Tstring& string() const noexcept { return fText; }
  unsigned int count() const noexcept { return fCount; }
  void setCount(unsigned int count) noexcept { fCount = count; }

  friend bool operator==(const TstringCount& left, const TstringCount& right) noexcept
  {
    return left.fText == right.fText;
  }
  friend bool operator!=(const TstringCount& left, const TstringCount& right) noexcept { return !(left == right); }

private:
  Tstring fText;
  TuInt32 fCount = 0;
};

/// "TEXT COUNT".
inline std::ostream& operator<<(std::ostream& out, const TstringCount& each)
{
  return out << each.string() << ' ' << each.count();
}

template <>
struct std::hash<TstringCount>
{
  std::size_t operator()(const TstringCount& each) const noexcept { return hash<Tstring>()(each.string()); }
};
