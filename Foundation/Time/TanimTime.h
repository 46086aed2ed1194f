/// \file
/// TanimTime: a moment or a span of animation time, as a whole number of ticks of which 6000 make a second.
///
/// Use it for key times, frames and ranges: the frames of all rates of TtimeUnitSystem are whole numbers of ticks, so
/// that times compare exactly and adding frames gathers no error. Four bytes; as cheap as an int. The traps: a plain
/// integer is a number of ticks, not of frames or seconds; and the product and the quotient of two times are those of
/// their ticks, so write `time * 2.0` for twice the time.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TsortedArray.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/Time/TtimeOrder.h"
#include "Foundation/Time/TtimeUnit.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <ratio>
#include <type_traits>

class TdebugOutput;

/// A signed 32-bit number of ticks: 99 hours each way. 0 at first.
///
/// \code
///   TanimTime time(12, kTime24Fps);                 // the moment of frame 12
///   time += TanimTime(std::chrono::seconds(1));     // 9000 ticks
///   time.valueInThisUnit(kTime30Fps);               // 45.0
///   TanimTime::setGlobalCurrentTimeUnit(kTime25Fps);
///   time.valueInSmpteUnit();                        // "00:00:01:12"
/// \endcode
///
/// Overflow: arithmetic between times wraps round in 32 bits. A number that no tick count can hold, once rounded or
/// truncated, and a NaN give the least time, -2147483648 ticks. Dividing by a zero time or number changes nothing.
///
/// Numbers are computed in double and in the order given here, with the same bits on every platform, as long as the
/// process keeps rounding to nearest. Use integers or std::chrono where a constant expression is wanted.
class TanimTime : public TtimeOrder<TanimTime>
{
public:
  static constexpr Tint32 kTicksPerSecond = 6000;

  /// The same count as a std::chrono::duration.
  using Ticks = std::chrono::duration<Tint32, std::ratio<1, kTicksPerSecond>>;

  // Construction

  constexpr TanimTime() noexcept = default;

  /// That many ticks, modulo 2^32.
  template <class Integer,
            std::enable_if_t<std::is_convertible_v<Integer, Tint32> && !std::is_floating_point_v<Integer>, int> = 0>
  constexpr TanimTime(Integer ticks) noexcept
    : fTicks(Tint32(ticks))
  {
  }

  /// That many ticks, truncated toward zero. Explicit, as there is most often a unit missing.
  template <class Real, std::enable_if_t<std::is_floating_point_v<Real>, int> = 0>
  explicit TanimTime(Real ticks) noexcept
    : fTicks(sTruncated(double(ticks)))
  {
  }

  /// As by setValue(); 0 for kTimeNone.
  TanimTime(double value, TtimeUnitSystem unit) noexcept { setValue(value, unit); }

  /// \code TanimTime pause(std::chrono::milliseconds(40)); \endcode
  explicit constexpr TanimTime(Ticks ticks) noexcept
    : fTicks(ticks.count())
  {
  }
  explicit constexpr operator Ticks() const noexcept { return Ticks(fTicks); }

  // Access

  constexpr Tint32 ticks() const noexcept { return fTicks; }
  constexpr void setTicks(Tint32 ticks) noexcept { fTicks = ticks; }

  // Units

  /// Becomes the tick nearest to \p value times the unit's ticks, of two such the even one. kTimeCurrent counts in the
  /// process's current unit; kTimeNone changes nothing; with what is no unit, \p value is truncated to ticks.
  FOUNDATION_API void setValue(double value, TtimeUnitSystem unit) noexcept;

  /// The ticks, multiplied by the reciprocal of those of \p unit. kTimeCurrent divides by the ticks of the process's
  /// current unit; kTimeNone and what is no unit give the ticks.
  FOUNDATION_API double valueInThisUnit(TtimeUnitSystem unit) const noexcept;

  /// The float nearest to the time in seconds.
  FOUNDATION_API float inSeconds() const noexcept;

  /// What \p value of the one unit is in the other, by way of a whole number of ticks. From kTimeNone it is 0.
  FOUNDATION_API static double convertFromUnitToUnit(double value, TtimeUnitSystem from, TtimeUnitSystem to) noexcept;

  /// The process's current unit, for values that users see; 24 frames per second at first. Where kTimeNone,
  /// kTimeCurrent or what is no unit is made the current one, it counts ticks.
  FOUNDATION_API static TtimeUnitSystem globalCurrentTimeUnit() noexcept;
  FOUNDATION_API static void setGlobalCurrentTimeUnit(TtimeUnitSystem unit) noexcept;

  // SMPTE

  /// Makes \p fields hours, minutes, seconds, and whole units of the process's current unit within the second: frames,
  /// of a frame rate; milliseconds; ticks, where it counts ticks; 0, where it is a second or longer. What is left of a
  /// frame is cut off. The fields of a negative time are negative or 0. All rates are whole, and no frame number is
  /// dropped. Returns 0; throws TmemoryException with \p fields empty.
  FOUNDATION_API long getValueInSmpteUnit(Tint32Array& fields) const;

  /// The fields as "01:02:03:04", behind a "-" if one is negative. Milliseconds have three digits, ticks four.
  FOUNDATION_API Tstring valueInSmpteUnit() const noexcept;

  // Arithmetic

  constexpr TanimTime& operator+=(const TanimTime& other) noexcept { return assign(Tint64(fTicks) + other.fTicks); }
  constexpr TanimTime& operator-=(const TanimTime& other) noexcept { return assign(Tint64(fTicks) - other.fTicks); }
  constexpr TanimTime& operator*=(const TanimTime& other) noexcept { return assign(Tint64(fTicks) * other.fTicks); }
  constexpr TanimTime& operator/=(const TanimTime& other) noexcept
  {
    return other.fTicks == 0 ? *this : assign(Tint64(fTicks) / other.fTicks);
  }

  /// Scale the ticks and truncate toward zero.
  FOUNDATION_API TanimTime& operator*=(double factor) noexcept;
  FOUNDATION_API TanimTime& operator/=(double divisor) noexcept;

  constexpr TanimTime operator-() const noexcept { return TanimTime() - *this; }
  friend constexpr TanimTime operator+(TanimTime left, const TanimTime& right) noexcept { return left += right; }
  friend constexpr TanimTime operator-(TanimTime left, const TanimTime& right) noexcept { return left -= right; }
  friend constexpr TanimTime operator*(TanimTime left, const TanimTime& right) noexcept { return left *= right; }
  friend constexpr TanimTime operator/(TanimTime left, const TanimTime& right) noexcept { return left /= right; }
  friend TanimTime operator*(TanimTime time, double factor) noexcept { return time *= factor; }
  friend TanimTime operator*(double factor, TanimTime time) noexcept { return time *= factor; }
  friend TanimTime operator/(TanimTime time, double divisor) noexcept { return time /= divisor; }

  /// Becomes \p lo if it is below that, otherwise \p hi if it is above that, even where \p hi is below \p lo.
  constexpr TanimTime& clamp(const TanimTime& lo, const TanimTime& hi) noexcept
  {
    return *this = *this < lo ? lo : hi < *this ? hi : *this;
  }

  // Comparison

  friend constexpr bool operator==(const TanimTime& left, const TanimTime& right) noexcept
  {
    return left.fTicks == right.fTicks;
  }
  friend constexpr bool operator<(const TanimTime& left, const TanimTime& right) noexcept
  {
    return left.fTicks < right.fTicks;
  }

  // Diagnostics

  /// Prints "TanimTime [address]: seconds s" on a line of \p out, or of the standard error output. \p level is not
  /// used.
  FOUNDATION_API void debug(TdebugOutput& out, unsigned int level) const;
  FOUNDATION_API static void debugMe(const TanimTime& time, unsigned int level);

private:
  constexpr TanimTime& assign(Tint64 ticks) noexcept { return fTicks = Tint32(ticks), *this; }
  FOUNDATION_API static Tint32 sTruncated(double ticks) noexcept;

  Tint32 fTicks = 0;
};

/// The time in seconds, as "1.5 s".
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TanimTime& time);

namespace std {

template <>
struct hash<TanimTime>
{
  size_t operator()(const TanimTime& time) const noexcept { return hash<Tint32>()(time.ticks()); }
};

} // namespace std

// clang-format off
class TanimTimeArray : public TtypedArray<TanimTime> { public: using TtypedArray::TtypedArray; };
class TanimTimeSortedArray : public TtypedSortedArray<TanimTime> { public: using TtypedSortedArray::TtypedSortedArray; };
// clang-format on

static_assert(sizeof(TanimTime) == 4 && std::is_trivially_copyable_v<TanimTime>, "a TanimTime is its ticks");
