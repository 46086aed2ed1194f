/// \file
/// TtimeRange: the animation time from one moment to another, as of a clip, a playback or a selection of keys.

#pragma once

#include "Foundation/Time/TanimTime.h"

#include <algorithm>
#include <ostream>

/// The ticks from a start to an end, both included: of a clip, its end is the time of the last frame, as it is shown in
/// a time line. At first it is empty, and extend() makes it hold times.
///
/// \code
///   TtimeRange keyed;
///   for (const TtimeValue& key : keys)
///     keyed.extend(key.time());
///   playback = playback.intersection(keyed);
/// \endcode
class TtimeRange
{
public:
  constexpr TtimeRange() noexcept = default;
  constexpr TtimeRange(const TanimTime& start, const TanimTime& end) noexcept
    : fStart(start)
    , fEnd(end)
  {
  }

  /// Of an empty range the start is behind the end.
  constexpr TanimTime start() const noexcept { return fStart; }
  constexpr TanimTime end() const noexcept { return fEnd; }
  constexpr void setStart(const TanimTime& start) noexcept { fStart = start; }
  constexpr void setEnd(const TanimTime& end) noexcept { fEnd = end; }

  constexpr bool isEmpty() const noexcept { return fEnd < fStart; }

  /// The time from the start to the end; 0 of an empty range. One of more than 99 hours wraps round.
  constexpr TanimTime duration() const noexcept { return isEmpty() ? TanimTime() : fEnd - fStart; }

  constexpr bool contains(const TanimTime& time) const noexcept { return fStart <= time && time <= fEnd; }

  /// Whether all of \p other, which may be empty, lies in this one.
  constexpr bool contains(const TtimeRange& other) const noexcept
  {
    return other.isEmpty() || (contains(other.fStart) && contains(other.fEnd));
  }

  /// Whether both have a moment in common.
  constexpr bool overlaps(const TtimeRange& other) const noexcept { return !intersection(other).isEmpty(); }

  /// The moment of the range that is nearest to \p time; of an empty range, \p time itself.
  constexpr TanimTime clamp(TanimTime time) const noexcept { return isEmpty() ? time : time.clamp(fStart, fEnd); }

  /// Makes the range long enough for \p time.
  constexpr void extend(const TanimTime& time) noexcept { *this = unionWith({time, time}); }

  /// What both hold.
  constexpr TtimeRange intersection(const TtimeRange& other) const noexcept
  {
    return {std::max(fStart, other.fStart), std::min(fEnd, other.fEnd)};
  }

  /// The shortest range around both, of which empty ones do not count.
  constexpr TtimeRange unionWith(const TtimeRange& other) const noexcept
  {
    if (isEmpty() || other.isEmpty())
      return isEmpty() ? other : *this;
    return {std::min(fStart, other.fStart), std::max(fEnd, other.fEnd)};
  }

  /// The range, so much later; an empty one stays as it is. Start and end wrap round one by one.
  constexpr TtimeRange operator+(const TanimTime& delay) const noexcept
  {
    return isEmpty() ? *this : TtimeRange(fStart + delay, fEnd + delay);
  }

  /// Empty ranges are equal.
  constexpr bool operator==(const TtimeRange& other) const noexcept
  {
    return isEmpty() ? other.isEmpty() : fStart == other.fStart && fEnd == other.fEnd;
  }
  constexpr bool operator!=(const TtimeRange& other) const noexcept { return !(*this == other); }

private:
  TanimTime fStart = 0x7FFFFFFF;
  TanimTime fEnd = -0x7FFFFFFF - 1;
};

inline std::ostream& operator<<(std::ostream& out, const TtimeRange& range)
{
  return range.isEmpty() ? out << "[]" : out << '[' << range.start() << " - " << range.end() << ']';
}

namespace std {

template <>
struct hash<TtimeRange>
{
  size_t operator()(const TtimeRange& range) const noexcept
  {
    return range.isEmpty() ? 0 : hash<TanimTime>()(range.start()) * 0x9E3779B1 ^ hash<TanimTime>()(range.end());
  }
};

} // namespace std

// clang-format off
class TtimeRangeArray : public TtypedArray<TtimeRange> { public: using TtypedArray::TtypedArray; };
// clang-format on
