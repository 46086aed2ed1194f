#include "Foundation/Time/TanimTime.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Debug/TdebugOutput.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ostream>

namespace {

TtimeUnitSystem gCurrentUnit = kTime24Fps;

// Hours, minutes, seconds and units within the second, none of them with another sign than the ticks.
std::array<Tint32, 4> smpteFields(Tint32 ticks) noexcept
{
  const auto in = [](TtimeUnit unit, Tint32 rest) { return rest / unit.ticksPerUnit(); };
  return {in(kTimeHours, ticks), in(kTimeMinutes, ticks) % 60, in(kTimeSeconds, ticks) % 60,
          in(gCurrentUnit, ticks % TanimTime::kTicksPerSecond)};
}

} // namespace

Tint32 TanimTime::sTruncated(double ticks) noexcept
{
  return ticks > -2147483649.0 && ticks < 2147483648.0 ? Tint32(ticks) : Tint32(-0x7FFFFFFF - 1);
}

void TanimTime::setValue(double value, TtimeUnitSystem unit) noexcept
{
  if (unit == kTimeNone)
    return;
  if (unit < kTimeHours || unit > kTimeCurrent)
    fTicks = sTruncated(value);
  else
  {
    const TtimeUnit counted = unit == kTimeCurrent ? gCurrentUnit : unit;
    fTicks = sTruncated(std::nearbyint(value * counted.ticksPerUnit()));
  }
}

double TanimTime::valueInThisUnit(TtimeUnitSystem unit) const noexcept
{
  if (unit == kTimeCurrent)
    return double(fTicks) / TtimeUnit(gCurrentUnit).ticksPerUnit();
  return fTicks * (1.0 / TtimeUnit(unit).ticksPerUnit());
}

float TanimTime::inSeconds() const noexcept
{
  return float(double(fTicks) / kTicksPerSecond);
}

double TanimTime::convertFromUnitToUnit(double value, TtimeUnitSystem from, TtimeUnitSystem to) noexcept
{
  return TanimTime(value, from).valueInThisUnit(to);
}

TtimeUnitSystem TanimTime::globalCurrentTimeUnit() noexcept
{
  return gCurrentUnit;
}

void TanimTime::setGlobalCurrentTimeUnit(TtimeUnitSystem unit) noexcept
{
  gCurrentUnit = unit;
}

long TanimTime::getValueInSmpteUnit(Tint32Array& fields) const
{
  const std::array<Tint32, 4> values = smpteFields(fTicks);
  fields.reset();
  return fields.addLast(values.data(), 4);
}

Tstring TanimTime::valueInSmpteUnit() const noexcept
{
  const std::array<Tint32, 4> fields = smpteFields(fTicks);
  const bool negative = std::any_of(fields.begin(), fields.end(), [](Tint32 field) { return field < 0; });
  const Tint32 perSecond = kTicksPerSecond / TtimeUnit(gCurrentUnit).ticksPerUnit();
  const int width = perSecond > 1000 ? 4 : perSecond > 100 ? 3 : 2;
  char text[64];
  std::snprintf(text, sizeof text, "%s%02d:%02d:%02d:%0*d", negative ? "-" : "", std::abs(int(fields[0])),
                std::abs(int(fields[1])), std::abs(int(fields[2])), width, std::abs(int(fields[3])));
  return text;
}

TanimTime& TanimTime::operator*=(double factor) noexcept
{
  fTicks = sTruncated(fTicks * factor);
  return *this;
}

TanimTime& TanimTime::operator/=(double divisor) noexcept
{
  if (divisor != 0)
    fTicks = sTruncated(fTicks / divisor);
  return *this;
}

void TanimTime::debug(TdebugOutput& out, unsigned int) const
{
  out.print("TanimTime [%#" PRIxPTR "]: %g s\n", reinterpret_cast<std::uintptr_t>(this), valueInThisUnit(kTimeSeconds));
}

void TanimTime::debugMe(const TanimTime& time, unsigned int level)
{
  time.debug(TdebugOutput::sCerr(), level);
}

std::ostream& operator<<(std::ostream& out, const TanimTime& time)
{
  return out << time.valueInThisUnit(kTimeSeconds) << " s";
}
