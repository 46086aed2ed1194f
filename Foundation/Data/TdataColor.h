/// \file
/// TdataReflectance and TdataSpectrum: colours as letters.

#pragma once

#include "Foundation/Data/TdataNumbers.h"
#include "Foundation/Math/GeometryTraits.h"

/// Red, green and blue, linear; black at first.
struct TrgbColor
{
  float fRed = 0;
  float fGreen = 0;
  float fBlue = 0;

  constexpr bool operator==(const TrgbColor& other) const noexcept
  {
    return fRed == other.fRed && fGreen == other.fGreen && fBlue == other.fBlue;
  }
  constexpr bool operator!=(const TrgbColor& other) const noexcept { return !(*this == other); }
};

inline std::ostream& operator<<(std::ostream& out, const TrgbColor& color)
{
  return out << '[' << color.fRed << ' ' << color.fGreen << ' ' << color.fBlue << ']';
}

template <>
struct std::hash<TrgbColor>
{
  std::size_t operator()(const TrgbColor& color) const noexcept { return Tcomponents::hash(&color.fRed, 3); }
};

/// How much of each light a surface gives back.
class FOUNDATION_API TdataReflectance : public TdataValueOf<TrgbColor, 3, TnumberType::kFloat>
{
public:
  using TdataValueOf::TdataValueOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

/// How much of each light there is.
class FOUNDATION_API TdataSpectrum : public TdataValueOf<TrgbColor, 3, TnumberType::kFloat>
{
public:
  using TdataValueOf::TdataValueOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
