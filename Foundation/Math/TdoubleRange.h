/// \file
/// TdoubleRange: the numbers from one to another. Tscale: three factors of size.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Math/GeometryTraits.h"

#include <algorithm>
#include <limits>
#include <ostream>

/// The numbers from a least to a greatest one, both included. At first it is empty, and extend() makes it hold values.
///
/// \code
///   TdoubleRange range;
///   for (const double key : keys)
///     range.extend(key);
/// \endcode
class TdoubleRange
{
public:
  constexpr TdoubleRange() noexcept = default;
  constexpr TdoubleRange(double least, double greatest) noexcept
    : fMin(least)
    , fMax(greatest)
  {
  }

  /// Of an empty range the one is above the other.
  constexpr double minimum() const noexcept { return fMin; }
  constexpr double maximum() const noexcept { return fMax; }

  constexpr bool isEmpty() const noexcept { return !(fMin <= fMax); }
  constexpr double length() const noexcept { return isEmpty() ? 0 : fMax - fMin; }
  constexpr bool contains(double value) const noexcept { return value >= fMin && value <= fMax; }

  /// The value of the range that is nearest to \p value; of an empty range, \p value itself.
  constexpr double clamp(double value) const noexcept
  {
    return isEmpty() ? value : std::max(fMin, std::min(value, fMax));
  }

  /// Makes the range wide enough for \p value. What is no number is left out.
  constexpr void extend(double value) noexcept
  {
    fMin = value < fMin ? value : fMin;
    fMax = value > fMax ? value : fMax;
  }

  /// What both hold.
  constexpr TdoubleRange intersection(const TdoubleRange& other) const noexcept
  {
    return {std::max(fMin, other.fMin), std::min(fMax, other.fMax)};
  }

  /// Empty ranges are equal.
  constexpr bool operator==(const TdoubleRange& other) const noexcept
  {
    return isEmpty() ? other.isEmpty() : fMin == other.fMin && fMax == other.fMax;
  }
  constexpr bool operator!=(const TdoubleRange& other) const noexcept { return !(*this == other); }

private:
  double fMin = std::numeric_limits<double>::infinity();
  double fMax = -std::numeric_limits<double>::infinity();
};

inline std::ostream& operator<<(std::ostream& out, const TdoubleRange& range)
{
  return range.isEmpty() ? out << "[]" : out << '[' << range.minimum() << ' ' << range.maximum() << ']';
}

template <>
struct std::hash<TdoubleRange>
{
  std::size_t operator()(const TdoubleRange& range) const noexcept
  {
    const double ends[] = {range.minimum(), range.maximum()};
    return range.isEmpty() ? 0 : Tcomponents::hash(ends, 2);
  }
};

/// How many times longer something becomes along each axis. At first it stays as it is.
class Tscale
{
public:
  constexpr Tscale() noexcept = default;
  constexpr explicit Tscale(double factor) noexcept
    : Tscale(factor, factor, factor)
  {
  }
  constexpr Tscale(double x, double y, double z) noexcept
    : fComponents{x, y, z}
  {
  }

  constexpr double x() const noexcept { return fComponents[0]; }
  constexpr double y() const noexcept { return fComponents[1]; }
  constexpr double z() const noexcept { return fComponents[2]; }
  constexpr const double* array() const noexcept { return fComponents; }

  constexpr bool isUniform() const noexcept { return x() == y() && y() == z(); }

  /// One after the other.
  constexpr Tscale operator*(const Tscale& other) const noexcept
  {
    return {x() * other.x(), y() * other.y(), z() * other.z()};
  }

  constexpr bool operator==(const Tscale& other) const noexcept
  {
    return Tcomponents::same(fComponents, other.fComponents);
  }
  constexpr bool operator!=(const Tscale& other) const noexcept { return !(*this == other); }

private:
  double fComponents[3] = {1, 1, 1};
};

template <>
struct std::hash<Tscale> : TcomponentHash<Tscale, double, 3>
{
};

inline std::ostream& operator<<(std::ostream& out, const Tscale& scale)
{
  return out << '[' << scale.x() << ' ' << scale.y() << ' ' << scale.z() << ']';
}

// clang-format off
class TdoubleRangeArray : public TtypedArray<TdoubleRange> { public: using TtypedArray::TtypedArray; };
class TscaleArray : public TtypedArray<Tscale> { public: using TtypedArray::TtypedArray; };
// clang-format on
