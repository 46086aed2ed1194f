#include "Foundation/Time/Tduration.h"

#include <cstdio>
#include <ostream>

double Tduration::inDays() const noexcept
{
  return fSeconds / 86400.0;
}

double Tduration::inHours() const noexcept
{
  return fSeconds / 3600.0;
}

double Tduration::inMinutes() const noexcept
{
  return fSeconds / 60.0;
}

double Tduration::inSeconds() const noexcept
{
  return fSeconds;
}

std::ostream& operator<<(std::ostream& out, const Tduration& duration)
{
  char text[64];
  std::snprintf(text, sizeof text, "%dd %02d:%02d:%02d", int(duration.days()), int(duration.hours()),
                int(duration.minutes()), int(duration.seconds()));
  return out << text;
}
