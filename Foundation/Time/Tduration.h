/// \file
/// Tduration: a span of wall-clock time in whole seconds, with its days, hours, minutes and seconds.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/Time/TtimeOrder.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>

/// Seconds, counted in 32 bits without a sign: up to 136 years. 0 at first. Whatever is negative or longer wraps round.
///
/// \code
///   const Tduration limit(1, 2, 30, 0);  // a day, two hours and a half
///   limit.hours();                       // 2
///   limit.inHours();                     // 26.5
/// \endcode
class Tduration : public TtimeOrder<Tduration>
{
public:
  constexpr Tduration() noexcept = default;
  constexpr Tduration(Tint32 seconds) noexcept { set(seconds); }

  /// The parts may be of any size and sign; their sum counts.
  constexpr Tduration(Tint32 days, Tint32 hours, Tint32 minutes, Tint32 seconds) noexcept
  {
    set(days, hours, minutes, seconds);
  }

  explicit constexpr Tduration(std::chrono::seconds seconds) noexcept
    : fSeconds(TuInt32(seconds.count()))
  {
  }
  explicit constexpr operator std::chrono::seconds() const noexcept { return std::chrono::seconds(fSeconds); }

  constexpr void set(Tint32 seconds) noexcept { fSeconds = TuInt32(seconds); }
  constexpr void set(Tint32 days, Tint32 hours, Tint32 minutes, Tint32 seconds) noexcept
  {
    fSeconds = TuInt32(days) * 86400 + TuInt32(hours) * 3600 + TuInt32(minutes) * 60 + TuInt32(seconds);
  }

  constexpr TuInt32 osDuration() const noexcept { return fSeconds; }
  constexpr void setOSDuration(TuInt32 seconds) noexcept { fSeconds = seconds; }

  /// The whole days, and the hours, minutes and seconds that are left then.
  constexpr Tint32 days() const noexcept { return Tint32(fSeconds / 86400); }
  constexpr Tint32 hours() const noexcept { return Tint32(fSeconds % 86400 / 3600); }
  constexpr Tint32 minutes() const noexcept { return Tint32(fSeconds % 3600 / 60); }
  constexpr Tint32 seconds() const noexcept { return Tint32(fSeconds % 60); }

  /// All of it in one unit.
  FOUNDATION_API double inDays() const noexcept;
  FOUNDATION_API double inHours() const noexcept;
  FOUNDATION_API double inMinutes() const noexcept;
  FOUNDATION_API double inSeconds() const noexcept;

  constexpr Tduration& operator+=(const Tduration& other) noexcept { return fSeconds += other.fSeconds, *this; }
  constexpr Tduration& operator-=(const Tduration& other) noexcept { return fSeconds -= other.fSeconds, *this; }
  friend constexpr Tduration operator+(Tduration left, const Tduration& right) noexcept { return left += right; }
  friend constexpr Tduration operator-(Tduration left, const Tduration& right) noexcept { return left -= right; }

  friend constexpr bool operator==(const Tduration& left, const Tduration& right) noexcept
  {
    return left.fSeconds == right.fSeconds;
  }
  friend constexpr bool operator<(const Tduration& left, const Tduration& right) noexcept
  {
    return left.fSeconds < right.fSeconds;
  }

private:
  TuInt32 fSeconds = 0;
};

/// As "1d 02:30:00".
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Tduration& duration);

namespace std {

template <>
struct hash<Tduration>
{
  size_t operator()(const Tduration& duration) const noexcept { return hash<TuInt32>()(duration.osDuration()); }
};

} // namespace std
