/// \file
/// TsortedArray: the array that keeps its elements in order, for binary search.
///
/// Use it for sets that are searched more often than changed, and iterated in order: inserting moves the elements
/// behind. The trap: insert() and addLast() at a given place, and writing through operator[], trust the caller to keep
/// the order; sort() mends it.

#pragma once

#include "Foundation/Container/TtypedArray.h"

#include <functional>

/// What sorted arrays of all elements share.
class FOUNDATION_API TsortedArray : public TobjArray
{
public:
  /// The status of a search that found nothing, and of an insertion that was refused.
  static constexpr long kNotThere = -1;

  TsortedArray(unsigned int elementSize, bool allowDuplicates, unsigned int sizeIncrement, bool movesBitwise)
    : TobjArray(elementSize, sizeIncrement, movesBitwise)
    , fAllowDuplicates(allowDuplicates)
  {
  }

  bool allowsDuplicates() const noexcept { return fAllowDuplicates; }

protected:
  TsortedArray(const TsortedArray& other) = default;
  TsortedArray(TsortedArray&& other) noexcept = default;

private:
  const bool fAllowDuplicates;
};

/// A sorted array of \p X, in the order of std::less.
///
/// \code
///   TdoubleSortedArray times(false, 16);
///   times.insert(2.0);
///   times.insert(1.0);
///   times.insert(2.0); // -1: there is one already
/// \endcode
///
/// Searches take logarithmic time.
template <class X>
class TtypedSortedArray : public TarrayElements<X, TelementHooks<X, TsortedArray>>
{
  using Base = TarrayElements<X, TelementHooks<X, TsortedArray>>;

public:
  /// \p allowDuplicates: whether insert() takes an element that is equal to one already there.
  explicit TtypedSortedArray(bool allowDuplicates, unsigned int sizeIncrement = 4)
    : Base(unsigned(sizeof(X)), allowDuplicates, sizeIncrement)
  {
  }

  TtypedSortedArray(const TtypedSortedArray& other) = default;
  TtypedSortedArray(TtypedSortedArray&& other) noexcept = default;

  /// As copy(); whether duplicates are allowed stays.
  TtypedSortedArray& operator=(const TtypedSortedArray& other)
  {
    copy(other);
    return *this;
  }

  /// Inserts \p value at its place, before elements equal to it. Returns -1 where that would be a forbidden duplicate.
  long insert(const X& value)
  {
    const unsigned int at = placeOf(value);
    return !this->allowsDuplicates() && holds(at, value) ? TsortedArray::kNotThere : insert(value, at);
  }

  /// Inserts \p value before \p index, past the end at the end. The caller knows that this is its place.
  long insert(const X& value, unsigned int index)
  {
    // What is moved as bytes anyway needs no hooks.
    if constexpr (std::is_trivially_copyable_v<X>)
      return Tarray::insertElement(&value, index, 1);
    else
      return this->insertElement(&value, index, 1);
  }

  /// Appends \p value, which the caller knows to be the greatest.
  long addLast(const X& value) { return insert(value, this->fLength); }

  /// Replaces the element at \p index by \p value and moves that to its place. Returns -1, with nothing changed, where
  /// that would be a forbidden duplicate or \p index is past the end.
  long change(unsigned int index, const X& value)
  {
    if (index >= this->fLength)
      return TsortedArray::kNotThere;
    unsigned int at = placeOf(value);
    // With duplicates forbidden, the one that goes is the only one that may be equal.
    if (!this->allowsDuplicates() && at != index && holds(at, value))
      return TsortedArray::kNotThere;
    X* const elements = this->data();
    X copy(value);
    if (at > index)
      std::rotate(elements + index, elements + index + 1, elements + at--);
    else
      std::rotate(elements + at, elements + index, elements + index + 1);
    elements[at] = std::move(copy);
    return 0;
  }

  /// Looks for the first element equal to \p value: the status is 0, or -1 with the index where it would be inserted.
  long find(const X& value) const { return holds(placeOf(value), value) ? 0 : TsortedArray::kNotThere; }
  long find(const X& value, unsigned int& index) const
  {
    const unsigned int at = placeOf(value);
    const long status = holds(at, value) ? 0 : TsortedArray::kNotThere;
    index = at;
    return status;
  }

  /// Looks for all elements equal to \p value: they are \p first to \p last, both included. With -1 both are the index
  /// where it would be inserted.
  long find(const X& value, unsigned int& first, unsigned int& last) const
  {
    const unsigned int at = placeOf(value);
    const X* const begin = this->begin();
    const X* const behind = std::upper_bound(begin + at, this->end(), value, std::less<X>());
    const bool found = behind != begin + at;
    first = at;
    last = found ? unsigned(behind - begin) - 1 : at;
    return found ? 0 : TsortedArray::kNotThere;
  }

  /// Removes the first element equal to \p value, or returns -1.
  long remove(const X& value)
  {
    const unsigned int at = placeOf(value);
    return holds(at, value) ? this->removeAt(at) : TsortedArray::kNotThere;
  }

  /// Makes this array the elements of \p array, of equal ones only the first if duplicates are forbidden here. No spare
  /// room is left otherwise.
  long copy(const TtypedSortedArray& array)
  {
    if (this != &array)
      this->copyElements(0, array.fData, array.fLength);
    if (!this->allowsDuplicates() && array.allowsDuplicates())
    {
      const auto equal = [](const X& one, const X& other) { return !std::less<X>()(one, other); };
      this->removeLast(unsigned(this->end() - std::unique(this->begin(), this->end(), equal)));
    }
    return 0;
  }

  /// Puts the elements in order. Equal ones keep theirs, and stay.
  long sort()
  {
    std::stable_sort(this->begin(), this->end(), std::less<X>());
    return 0;
  }

  /// Whether also the order holds, strictly if duplicates are forbidden.
  bool validate() const
  {
    const auto disordered = [this](const X& one, const X& next) {
      return this->allowsDuplicates() ? std::less<X>()(next, one) : !std::less<X>()(one, next);
    };
    return Tarray::validate() && std::adjacent_find(this->begin(), this->end(), disordered) == this->end();
  }

private:
  // The index of the first element that is not less than the value.
  unsigned int placeOf(const X& value) const
  {
    const std::less<X> less;
    const X* first = this->data();
    unsigned int count = this->fLength;
    // Values often come in order.
    if (count == 0 || less(first[count - 1], value))
      return count;
    // Where the compiler chooses without a jump, there is none to guess wrong.
    while (count > 1)
    {
      const unsigned int half = count / 2;
      first += less(first[half - 1], value) ? half : 0;
      count -= half;
    }
    return unsigned(first - this->data());
  }

  bool holds(unsigned int index, const X& value) const
  {
    return index < this->fLength && !std::less<X>()(value, (*this)[index]);
  }
};
