/// \file
/// TosTime: the operating system's tick count, for measuring short spans of real time.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/Time/TtimeOrder.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>

/// Milliseconds since some moment before the process began, in 32 bits without a sign. 0 at first. They begin again
/// every 49.7 days: the difference of two counts is right across that, a comparison of them is not.
///
/// \code
///   const TosTime start = TosTime::now();
///   while (TosTime::now() - start < 40)
///     work();
/// \endcode
class TosTime : public TtimeOrder<TosTime>
{
public:
  constexpr TosTime() noexcept = default;
  constexpr TosTime(TuInt32 ticks) noexcept
    : fTicks(ticks)
  {
  }

  explicit constexpr TosTime(std::chrono::milliseconds time) noexcept
    : fTicks(TuInt32(time.count()))
  {
  }
  explicit constexpr operator std::chrono::milliseconds() const noexcept { return std::chrono::milliseconds(fTicks); }

  /// The present count, which no change of the clock disturbs.
  FOUNDATION_API static TosTime now() noexcept;

  constexpr TuInt32 ticks() const noexcept { return fTicks; }

  constexpr TosTime& operator+=(const TosTime& other) noexcept { return fTicks += other.fTicks, *this; }
  constexpr TosTime& operator-=(const TosTime& other) noexcept { return fTicks -= other.fTicks, *this; }
  friend constexpr TosTime operator+(TosTime left, const TosTime& right) noexcept { return left += right; }
  friend constexpr TosTime operator-(TosTime left, const TosTime& right) noexcept { return left -= right; }

  friend constexpr bool operator==(const TosTime& left, const TosTime& right) noexcept
  {
    return left.fTicks == right.fTicks;
  }
  friend constexpr bool operator<(const TosTime& left, const TosTime& right) noexcept
  {
    return left.fTicks < right.fTicks;
  }

private:
  TuInt32 fTicks = 0;
};

/// As "40 ms".
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TosTime& time);

namespace std {

template <>
struct hash<TosTime>
{
  size_t operator()(const TosTime& time) const noexcept { return hash<TuInt32>()(time.ticks()); }
};

} // namespace std
