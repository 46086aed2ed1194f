/// \file
/// Tangle: an angle, in radians inside and in any unit outside.
///
/// Use it where a bare number would leave the unit open. It is one double, and all but the trigonometry is constexpr.
/// The main trap: an angle is not brought into a range unless normal() is asked for, so 370 degrees are not 10.

#pragma once

#include "Foundation/Math/GeometryTraits.h"

#include <cmath>

/// Zero at first. Positive angles turn right-handedly.
///
/// \code
///   const Tangle opening(35, Tangle::kDegrees);
///   const double focal = 0.5 * aperture / std::tan((opening / 2).radians());
///   label << toward.angleBetween(T4dDblVector::zAxis).degrees();
/// \endcode
class Tangle
{
public:
  enum Unit
  {
    kRadians,
    kDegrees,
    kMinutes,  ///< of arc, 60 to a degree
    kSeconds,  ///< of arc, 60 to a minute
    kGradians, ///< 400 to a turn
    kTurns
  };

  static constexpr double kPi = 3.14159265358979323846;

  constexpr Tangle() noexcept = default;
  constexpr explicit Tangle(double value, Unit unit = kRadians) noexcept { set(value, unit); }

  constexpr void set(double value, Unit unit = kRadians) noexcept
  {
    fRadians = unit == kRadians ? value : value / sHalfTurn(unit) * kPi;
  }

  /// The angle in a unit. Multiples of 30 degrees up to 900 that came in as degrees go out as the same number.
  constexpr double in(Unit unit) const noexcept
  {
    return unit == kRadians ? fRadians : fRadians / kPi * sHalfTurn(unit);
  }
  constexpr double radians() const noexcept { return fRadians; }
  constexpr double degrees() const noexcept { return in(kDegrees); }

  double sin() const noexcept { return std::sin(fRadians); }
  double cos() const noexcept { return std::cos(fRadians); }
  double tan() const noexcept { return std::tan(fRadians); }

  /// The same direction, from -180 to 180 degrees.
  Tangle normal() const noexcept { return Tangle(std::remainder(fRadians, 2 * kPi)); }

  constexpr Tangle operator+(Tangle a) const noexcept { return Tangle(fRadians + a.fRadians); }
  constexpr Tangle operator-(Tangle a) const noexcept { return Tangle(fRadians - a.fRadians); }
  constexpr Tangle& operator+=(Tangle a) noexcept { return *this = *this + a; }
  constexpr Tangle& operator-=(Tangle a) noexcept { return *this = *this - a; }
  constexpr Tangle operator-() const noexcept { return Tangle(-fRadians); }
  constexpr Tangle operator*(double factor) const noexcept { return Tangle(fRadians * factor); }
  constexpr Tangle& operator*=(double factor) noexcept { return *this = *this * factor; }
  friend constexpr Tangle operator*(double factor, Tangle a) noexcept { return a * factor; }

  /// Divides, but leaves the angle as it is if the magnitude of \p divisor is at most 1e-10, as vectors do.
  constexpr Tangle operator/(double divisor) const noexcept
  {
    return Tcomponents::mayDivideBy(divisor) ? Tangle(fRadians / divisor) : *this;
  }
  constexpr Tangle& operator/=(double divisor) noexcept { return *this = *this / divisor; }

  constexpr bool operator==(Tangle a) const noexcept { return fRadians == a.fRadians; }
  constexpr bool operator!=(Tangle a) const noexcept { return fRadians != a.fRadians; }
  constexpr bool operator<(Tangle a) const noexcept { return fRadians < a.fRadians; }
  constexpr bool operator>(Tangle a) const noexcept { return fRadians > a.fRadians; }
  constexpr bool operator<=(Tangle a) const noexcept { return fRadians <= a.fRadians; }
  constexpr bool operator>=(Tangle a) const noexcept { return fRadians >= a.fRadians; }

  /// Whether the difference, as it is, is at most \p tolerance radians.
  constexpr bool equivalent(Tangle a, double tolerance) const noexcept
  {
    return Tcomponents::magnitude(fRadians - a.fRadians) <= tolerance;
  }

  /// In degrees, as "90 deg".
  friend std::ostream& operator<<(std::ostream& out, Tangle a) { return out << a.degrees() << " deg"; }

private:
  // Units to 180 degrees.
  static constexpr double sHalfTurn(Unit unit) noexcept
  {
    constexpr double halfTurns[] = {kPi, 180, 180 * 60, 180 * 3600, 200, 0.5};
    return halfTurns[unit];
  }

  double fRadians = 0;
};

template <>
struct std::hash<Tangle>
{
  std::size_t operator()(Tangle a) const noexcept { return std::hash<double>()(a.radians()); }
};
