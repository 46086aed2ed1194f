/// \file
/// TtimeUnit: the units in which animation time is read and entered.
///
/// Use TtimeUnitSystem for a unit in a call, TtimeUnit for one that an object keeps. The trap: a TtimeUnit is its
/// owner's; the unit of the process is that of TanimTime::globalCurrentTimeUnit().

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <functional>
#include <iosfwd>

/// The values are written to files. Any other is good as well: it is a unit of one tick.
enum TtimeUnitSystem : int
{
  kTimeHours,
  kTimeMinutes,
  kTimeSeconds,
  kTimeMilliseconds,
  kTime15Fps,
  kTime24Fps,
  kTime25Fps,
  kTime30Fps,
  kTime48Fps,
  kTime50Fps,
  kTime60Fps,
  kTimeNone,   ///< no unit: nothing is converted
  kTimeCurrent ///< what TanimTime::globalCurrentTimeUnit() says at the time
};

/// A unit that an object keeps: 24 frames per second at first.
class TtimeUnit
{
public:
  constexpr TtimeUnit() noexcept = default;
  constexpr TtimeUnit(TtimeUnitSystem unit) noexcept
    : fUnit(unit)
  {
  }

  constexpr TtimeUnitSystem currentUnit() const noexcept { return fUnit; }
  constexpr void setCurrentUnit(TtimeUnitSystem unit) noexcept { fUnit = unit; }

  /// Ticks of TanimTime in one hour, second, frame…; 1 for kTimeNone, kTimeCurrent and what is no unit.
  constexpr Tint32 ticksPerUnit() const noexcept
  {
    return fUnit >= kTimeHours && fUnit < kTimeNone ? kTicks[fUnit] : 1;
  }

  /// "seconds", "24 fps", "current"…; "ticks" for what is no unit.
  FOUNDATION_API const char* name() const noexcept;

  constexpr bool operator==(const TtimeUnit& other) const noexcept { return fUnit == other.fUnit; }
  constexpr bool operator!=(const TtimeUnit& other) const noexcept { return fUnit != other.fUnit; }

private:
  static constexpr Tint32 kTicks[] = {21600000, 360000, 6000, 6, 400, 250, 240, 200, 125, 120, 100};

  TtimeUnitSystem fUnit = kTime24Fps;
};

/// The name.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TtimeUnit& unit);

namespace std {

template <>
struct hash<TtimeUnit>
{
  size_t operator()(const TtimeUnit& unit) const noexcept { return hash<int>()(unit.currentUnit()); }
};

} // namespace std
