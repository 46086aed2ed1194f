/// \file
/// What differs between the double- and the single-precision classes of the geometry, and what all of them do alike.
/// Nothing here is for use outside.

#pragma once

#include "Foundation/Math/Geometry.h"

#include <cstddef>
#include <functional>
#include <ostream>
#include <type_traits>

/// The thresholds of one precision.
template <class Real>
struct TgeometryTraits;

template <>
struct TgeometryTraits<double>
{
  static constexpr bool kIsDouble = true;
  static constexpr double kNoDivisor = 1e-10;           // up to here a division leaves its operand
  static constexpr double kNoNorm = 1e-20;              // up to here a squared length is none
  static constexpr double kNoPivot = 1e-15;             // up to here elimination skips a column
  static constexpr double kNoFastInverse = 1e-5F;       // up to this determinant inversion is by elimination
  static constexpr bool kMultipliesByReciprocal = true; // what a vector does when it is divided
};

template <>
struct TgeometryTraits<float>
{
  static constexpr bool kIsDouble = false;
  static constexpr float kNoDivisor = 1e-5F;
  static constexpr float kNoNorm = 1e-10F;
  static constexpr float kNoPivot = 1e-5F;
  static constexpr float kNoFastInverse = 0;
  static constexpr bool kMultipliesByReciprocal = false;
};

/// How far from 1 a squared length counts as 1, in both precisions.
inline constexpr double kUnitNormTolerance = 2e-10;

/// Members of one precision only have one of these for a template argument. Of double precision are a vector's angles,
/// rotations, approxLength(), changeLengthTo() and nonZero(), and a matrix's isAffine() and affine products; of single
/// precision what converts from and to double precision, and a matrix's convertItForTangents().
template <class Real>
using TdoubleOnly = std::enable_if_t<TgeometryTraits<Real>::kIsDouble>;
template <class Real>
using TfloatOnly = std::enable_if_t<!TgeometryTraits<Real>::kIsDouble>;

/// Operations on the components of any class.
struct Tcomponents
{
  // Without a branch, which processors cannot foretell for signs.
  static constexpr double magnitude(double value) noexcept { return __builtin_fabs(value); }
  static constexpr float magnitude(float value) noexcept { return __builtin_fabsf(value); }

  template <class Real>
  static constexpr bool mayDivideBy(Real divisor) noexcept
  {
    return !(magnitude(divisor) <= TgeometryTraits<Real>::kNoDivisor);
  }

  template <class Real, std::size_t kCount>
  static constexpr bool same(const Real (&a)[kCount], const Real (&b)[kCount]) noexcept
  {
    bool first3 = a[0] == b[0] && a[1] == b[1] && a[2] == b[2];
    if constexpr (kCount == 4)
      return first3 && a[3] == b[3];
    return first3;
  }

  /// The squared distance, in double precision whatever the components are.
  template <class Real, std::size_t kCount>
  static constexpr double distance2(const Real (&a)[kCount], const Real (&b)[kCount]) noexcept
  {
    const double x = double(a[0]) - b[0], y = double(a[1]) - b[1], z = double(a[2]) - b[2];
    if constexpr (kCount == 4)
    {
      const double w = double(a[3]) - b[3];
      return x * x + y * y + z * z + w * w;
    }
    return x * x + y * y + z * z;
  }

  /// For std::hash. Numbers that are equal hash alike, +0 and -0 too.
  template <class Number>
  static std::size_t hash(const Number* components, std::size_t count) noexcept
  {
    std::size_t hash = count;
    for (std::size_t i = 0; i < count; ++i)
      hash = (hash ^ std::hash<Number>()(components[i])) * std::size_t(0x9E3779B97F4A7C15) + (hash >> 15);
    return hash;
  }

  /// "<1, 2, 3>", with the numbers as the stream is set.
  template <class Real>
  static std::ostream& write(std::ostream& out, const Real* components, std::size_t count)
  {
    for (std::size_t i = 0; i < count; ++i)
      out << (i == 0 ? "<" : ", ") << components[i];
    return out << '>';
  }
};

/// The std::hash of a class of which array() shows \p kCount components.
template <class Value, class Real, std::size_t kCount>
struct TcomponentHash
{
  std::size_t operator()(const Value& value) const noexcept
  {
    const Real* components = value.array();
    return Tcomponents::hash(components, kCount);
  }
};
