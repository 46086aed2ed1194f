/// \file
/// A pseudo-random generator whose sequence is the same on every platform. Internal to the library.
///
/// The additive feedback generator x[n] = x[n-3] + x[n-31] of the BSD systems' random(), with their way of seeding: it
/// gives the numbers that srandom() and random() give there, but neither disturbs nor follows the process's own.

#pragma once

#include "Foundation/Platform/Types.h"

namespace Platform {

class Random
{
public:
  explicit Random(TuInt32 seed)
  {
    Tint64 word = seed ? seed : 1;
    for (TuInt32& each : fState)
    {
      each = TuInt32(word);
      word = Tint64(Tint32(word)) * 16807 % 0x7FFFFFFF; // Park and Miller's generator
      if (word < 0)
        word += 0x7FFFFFFF;
    }
    for (int i = 0; i < 10 * kDegree; ++i)
      next();
  }

  /// 31 bits.
  TuInt32 next()
  {
    TuInt32& oldest = fState[fNext];
    oldest += fState[(fNext + kDegree - kSeparation) % kDegree];
    fNext = (fNext + 1) % kDegree;
    return oldest >> 1;
  }

private:
  static constexpr int kDegree = 31;
  static constexpr int kSeparation = 3;

  TuInt32 fState[kDegree];
  int fNext = kSeparation; // the oldest number, which the next one replaces
};

} // namespace Platform
