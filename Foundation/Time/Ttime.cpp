#include "Foundation/Time/Ttime.h"

#include "Foundation/Platform/Memory.h"

#include <cstdio>
#include <ostream>

Ttime Ttime::now() noexcept
{
  return Ttime(TuInt32(Platform::systemTime()));
}

std::ostream& operator<<(std::ostream& out, const Ttime& time)
{
  const std::chrono::sys_seconds moment{std::chrono::seconds(time.osTime())};
  const auto midnight = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(midnight);
  const Tduration clock(Tint32((moment - midnight).count()));
  char text[64];
  std::snprintf(text, sizeof text, "%d-%02u-%02uT%02d:%02d:%02dZ", int(date.year()), unsigned(date.month()),
                unsigned(date.day()), int(clock.hours()), int(clock.minutes()), int(clock.seconds()));
  return out << text;
}
