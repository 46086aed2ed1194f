/// \file
/// Which comparison operators are true for each order of two values, and which mean nothing. Internal.

#pragma once

#include "Foundation/Data/TdataLetter.h"

enum Tcomparison : unsigned
{
  kIsEqual = 1,
  kIsNotEqual = 2,
  kIsLess = 4,
  kIsLessOrEqual = 8,
  kIsGreater = 16,
  kIsGreaterOrEqual = 32,

  kAllOfOrder = kIsLess | kIsLessOrEqual | kIsGreater | kIsGreaterOrEqual,
  kAllComparisons = kIsEqual | kIsNotEqual | kAllOfOrder
};

struct TanswersToComparison
{
  unsigned fTrue;
  unsigned fMeaningless;
};

/// By TorderOfData.
inline constexpr TanswersToComparison kAnswers[] = {
  {kIsNotEqual | kIsLess | kIsLessOrEqual, 0},                     // kLess
  {kIsEqual | kIsLessOrEqual | kIsGreaterOrEqual, 0},              // kEqual
  {kIsNotEqual | kIsGreater | kIsGreaterOrEqual, 0},               // kGreater
  {kIsNotEqual, 0},                                                // kUnordered
  {kIsEqual | kIsGreater | kIsGreaterOrEqual, kAllOfOrder},        // kSame
  {kIsNotEqual | kIsGreater | kIsGreaterOrEqual, kAllOfOrder},     // kDifferent
  {kIsNotEqual | kIsGreater | kIsGreaterOrEqual, kAllComparisons}, // kIncompatible
};

inline bool isTrue(Tcomparison comparison, TorderOfData order) noexcept
{
  return kAnswers[int(order)].fTrue & comparison;
}

/// Of numbers.
template <class Number>
TorderOfData orderOf(Number left, Number right) noexcept
{
  return left < right    ? TorderOfData::kLess
         : left > right  ? TorderOfData::kGreater
         : left == right ? TorderOfData::kEqual
                         : TorderOfData::kUnordered;
}
