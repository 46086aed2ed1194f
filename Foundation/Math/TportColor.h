/// \file
/// TportColor: a colour as a drawing port takes it, with 8 bits for each component.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <functional>
#include <ostream>

/// Red, green, blue and coverage, each from 0 to 255. Black and opaque at first.
class TportColor
{
public:
  constexpr TportColor() noexcept = default;
  constexpr TportColor(TuInt8 red, TuInt8 green, TuInt8 blue, TuInt8 alpha = 255) noexcept
    : fRed(red)
    , fGreen(green)
    , fBlue(blue)
    , fAlpha(alpha)
  {
  }

  constexpr TuInt8 red() const noexcept { return fRed; }
  constexpr TuInt8 green() const noexcept { return fGreen; }
  constexpr TuInt8 blue() const noexcept { return fBlue; }
  constexpr TuInt8 alpha() const noexcept { return fAlpha; }

  constexpr bool operator==(const TportColor& other) const noexcept
  {
    return fRed == other.fRed && fGreen == other.fGreen && fBlue == other.fBlue && fAlpha == other.fAlpha;
  }
  constexpr bool operator!=(const TportColor& other) const noexcept { return !(*this == other); }

private:
  TuInt8 fRed = 0, fGreen = 0, fBlue = 0, fAlpha = 255;
};

inline std::ostream& operator<<(std::ostream& out, const TportColor& color)
{
  return out << '[' << int(color.red()) << ' ' << int(color.green()) << ' ' << int(color.blue()) << ' '
             << int(color.alpha()) << ']';
}

template <>
struct std::hash<TportColor>
{
  std::size_t operator()(const TportColor& color) const noexcept
  {
    return hash<TuInt32>()(TuInt32(color.red()) << 24 | TuInt32(color.green()) << 16 | TuInt32(color.blue()) << 8 |
                           color.alpha());
  }
};

// clang-format off
class TportColorArray : public TtypedArray<TportColor> { public: using TtypedArray::TtypedArray; };
// clang-format on
