/// \file
/// Ttime: a moment of wall-clock time in whole seconds, as of a file's change.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/Time/Tduration.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>

/// The operating system's time: seconds since the beginning of 1970, UTC, in 32 bits without a sign, which reach to
/// 2106. 0 at first. Arithmetic wraps round.
///
/// \code
///   const Ttime begin = Ttime::now();
///   render();
///   std::cout << "rendered in " << Ttime::now() - begin << '\n';
/// \endcode
class Ttime : public TtimeOrder<Ttime>
{
public:
  constexpr Ttime() noexcept = default;
  explicit constexpr Ttime(TuInt32 osTime) noexcept
    : fOSTime(osTime)
  {
  }

  /// The second in which \p time lies.
  explicit constexpr Ttime(std::chrono::system_clock::time_point time) noexcept
    : fOSTime(TuInt32(std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count()))
  {
  }
  explicit constexpr operator std::chrono::system_clock::time_point() const noexcept
  {
    return std::chrono::system_clock::time_point(std::chrono::seconds(fOSTime));
  }

  /// The time of the system's clock, which may be set back.
  FOUNDATION_API static Ttime now() noexcept;

  constexpr TuInt32 osTime() const noexcept { return fOSTime; }
  constexpr void setOSTime(TuInt32 osTime) noexcept { fOSTime = osTime; }
  constexpr void set(TuInt32 osTime) noexcept { fOSTime = osTime; }

  constexpr Ttime& operator+=(const Tduration& span) noexcept { return fOSTime += span.osDuration(), *this; }
  constexpr Ttime& operator-=(const Tduration& span) noexcept { return fOSTime -= span.osDuration(), *this; }
  friend constexpr Ttime operator+(Ttime time, const Tduration& span) noexcept { return time += span; }
  friend constexpr Ttime operator-(Ttime time, const Tduration& span) noexcept { return time -= span; }

  /// The time from \p start to \p end.
  friend constexpr Tduration operator-(const Ttime& end, const Ttime& start) noexcept
  {
    return Tint32(end.fOSTime - start.fOSTime);
  }

  friend constexpr bool operator==(const Ttime& left, const Ttime& right) noexcept
  {
    return left.fOSTime == right.fOSTime;
  }
  friend constexpr bool operator<(const Ttime& left, const Ttime& right) noexcept
  {
    return left.fOSTime < right.fOSTime;
  }

private:
  TuInt32 fOSTime = 0;
};

/// As "2001-09-09T01:46:40Z", whatever the locale and the time zone.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Ttime& time);

namespace std {

template <>
struct hash<Ttime>
{
  size_t operator()(const Ttime& time) const noexcept { return hash<TuInt32>()(time.osTime()); }
};

} // namespace std
