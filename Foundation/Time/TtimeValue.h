/// \file
/// TtimeValue: a number at a time, as a key of an animation curve or a sample of a channel.

#pragma once

#include "Foundation/Time/TanimTime.h"

#include <ostream>

/// A time and a value; both 0 at first. They order by time, and at the same time by value.
///
/// \code
///   TtimeValueArray keys{{TanimTime(0, kTimeSeconds), 0.0}, {TanimTime(2, kTimeSeconds), 90.0}};
///   const auto next = std::lower_bound(keys.begin(), keys.end(), TtimeValue(now, -INFINITY));
/// \endcode
class TtimeValue : public TtimeOrder<TtimeValue>
{
public:
  constexpr TtimeValue() noexcept = default;
  constexpr TtimeValue(const TanimTime& time, double value) noexcept
    : fTime(time)
    , fValue(value)
  {
  }

  constexpr TanimTime time() const noexcept { return fTime; }
  constexpr double value() const noexcept { return fValue; }
  constexpr void setTime(const TanimTime& time) noexcept { fTime = time; }
  constexpr void setValue(double value) noexcept { fValue = value; }

  friend constexpr bool operator==(const TtimeValue& left, const TtimeValue& right) noexcept
  {
    return left.fTime == right.fTime && left.fValue == right.fValue;
  }
  friend constexpr bool operator<(const TtimeValue& left, const TtimeValue& right) noexcept
  {
    return left.fTime < right.fTime || (left.fTime == right.fTime && left.fValue < right.fValue);
  }

private:
  TanimTime fTime;
  [[maybe_unused]] Tint32 fZero = 0; // a gap would be compared by the search of arrays
  double fValue = 0;
};

inline std::ostream& operator<<(std::ostream& out, const TtimeValue& key)
{
  return out << key.value() << " at " << key.time();
}

namespace std {

template <>
struct hash<TtimeValue>
{
  size_t operator()(const TtimeValue& key) const noexcept
  {
    return hash<TanimTime>()(key.time()) * 0x9E3779B1 ^ hash<double>()(key.value());
  }
};

} // namespace std

// clang-format off
class TtimeValueArray : public TtypedArray<TtimeValue> { public: using TtypedArray::TtypedArray; };
// clang-format on

static_assert(sizeof(TtimeValue) == 16, "a time, a zero and a value, with the same places on every platform");
