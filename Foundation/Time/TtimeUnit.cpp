#include "Foundation/Time/TtimeUnit.h"

#include <ostream>

const char* TtimeUnit::name() const noexcept
{
  static constexpr const char* kNames[] = {"hours",  "minutes", "seconds", "milliseconds", "15 fps", "24 fps", "25 fps",
                                           "30 fps", "48 fps",  "50 fps",  "60 fps",       "none",   "current"};
  return fUnit >= kTimeHours && fUnit <= kTimeCurrent ? kNames[fUnit] : "ticks";
}

std::ostream& operator<<(std::ostream& out, const TtimeUnit& unit)
{
  return out << unit.name();
}
