/// \file
/// TargType: what one argument of a call is, by the code of its type and, for an array, how many elements it may have.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <functional>
#include <ostream>

/// The type of an argument: none (code 0), a single value, or an array of values.
///
/// \code
///   constexpr int kNumber = 5; // codes are the caller's
///   TargType weights(kNumber, 2, 4);
///   weights.isArray();           // true
///   weights == TargType(kNumber, 7); // true: counts are not compared
///   weights == kNumber;          // false: that would be a single one
/// \endcode
class TargType
{
public:
  constexpr TargType() noexcept = default;
  constexpr TargType(int type) noexcept
    : fType(type)
  {
  }

  /// An array of at least \p least elements. A \p most of 0 sets no limit.
  constexpr TargType(int type, unsigned int least, unsigned int most = 0) noexcept
    : fIsArray(true)
    , fType(type)
    , fMinCount(least)
    , fMaxCount(most)
  {
  }

  /// The counts of a type that is no array mean nothing and are not copied.
  constexpr TargType(const TargType& other) noexcept { *this = other; }
  constexpr TargType& operator=(const TargType& other) noexcept
  {
    fIsArray = other.fIsArray;
    fType = other.fType;
    if (fIsArray)
    {
      fMinCount = other.fMinCount;
      fMaxCount = other.fMaxCount;
    }
    return *this;
  }

  constexpr void setType(int type) noexcept
  {
    fType = type;
    fIsArray = false;
  }
  constexpr void setType(int type, unsigned int least, unsigned int most = 0) noexcept { *this = {type, least, most}; }

  /// Makes an array of it; what is not given stays as it was, or is 0 when it was no array.
  constexpr void setArray() noexcept { setArray(fIsArray ? fMinCount : 0); }
  constexpr void setArray(unsigned int least) noexcept { setArray(least, fIsArray ? fMaxCount : 0); }
  constexpr void setArray(unsigned int least, unsigned int most) noexcept { setType(fType, least, most); }
  constexpr void clearArray() noexcept { fIsArray = false; }

  constexpr bool isArray() const noexcept { return fIsArray; }

  /// Whether there is an argument at all.
  constexpr bool isArg() const noexcept { return fType != 0; }

  constexpr int type() const noexcept { return fType; }
  constexpr unsigned int minCount() const noexcept { return fMinCount; }
  constexpr unsigned int maxCount() const noexcept { return fMaxCount; }

  friend constexpr bool operator==(const TargType& left, const TargType& right) noexcept
  {
    return left.fType == right.fType && left.fIsArray == right.fIsArray;
  }
  friend constexpr bool operator!=(const TargType& left, const TargType& right) noexcept { return !(left == right); }

private:
  bool fIsArray = false;
  Tint32 fType = 0;
  TuInt32 fMinCount = 0;
  TuInt32 fMaxCount = 0;
};

/// "5" for a single value, "5[2..4]" and "5[2..]" for arrays.
inline std::ostream& operator<<(std::ostream& out, const TargType& type)
{
  out << type.type();
  if (!type.isArray())
    return out;
  out << '[' << type.minCount() << "..";
  if (type.maxCount() != 0)
    out << type.maxCount();
  return out << ']';
}

template <>
struct std::hash<TargType>
{
  std::size_t operator()(const TargType& type) const noexcept
  {
    return hash<int>()(type.isArray() ? ~type.type() : type.type());
  }
};

template <>
inline constexpr bool kMovesBitwise<TargType> = true;

class TargTypeArray : public TtypedObjArray<TargType>
{
public:
  using TtypedArray::TtypedArray;
};
