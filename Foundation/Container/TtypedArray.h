/// \file
/// The typed faces over Tarray: what gives TdoubleArray and every other member of the family its interface.
///
/// Derive an array of your own elements in one line:
///
/// \code
///   class TedgeArray : public TtypedArray<Tedge> { public: using TtypedArray::TtypedArray; };
/// \endcode
///
/// TtypedArray is for elements that may be copied as bytes, TtypedObjArray for those that may not.

#pragma once

#include "Foundation/Container/TobjArray.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/// Access to the elements of \p Base as those of type \p X. Like standard containers it works in a range `for`, with
/// the algorithms and as a std::span.
template <class X, class Base>
class TarrayElements : public Base
{
  static_assert(alignof(X) <= 2 * sizeof(void*), "buffers are aligned as malloc aligns them everywhere");

public:
  using value_type = X;
  using iterator = X*;
  using const_iterator = const X*;

  using Base::Base;

  /// The element at \p index, which is not checked.
  X& operator[](unsigned int index) noexcept { return data()[index]; }
  const X& operator[](unsigned int index) const noexcept { return data()[index]; }

  /// The last of at least one element.
  X& last() noexcept { return data()[this->fLength - 1]; }
  const X& last() const noexcept { return data()[this->fLength - 1]; }

  /// The first element; null as long as there is no buffer. Valid until the buffer grows or shrinks.
  X* data() noexcept { return reinterpret_cast<X*>(this->fData); }
  const X* data() const noexcept { return reinterpret_cast<const X*>(this->fData); }

  X* begin() noexcept { return data(); }
  X* end() noexcept { return data() + this->fLength; }
  const X* begin() const noexcept { return data(); }
  const X* end() const noexcept { return data() + this->fLength; }
  std::size_t size() const noexcept { return this->fLength; }
};

/// Whether an element keeps its meaning when its bytes are moved to another address and those left behind are
/// forgotten. Say so for a class of yours by a specialisation.
template <class X>
inline constexpr bool kMovesBitwise = std::is_trivially_copyable_v<X>;

/// The hooks of \p Base, a TobjArray, for elements of type \p X. Its constructors take the arguments of \p Base without
/// the last.
template <class X, class Base>
class TelementHooks : public Base
{
public:
  template <class... Arguments>
  explicit TelementHooks(unsigned int elementSize, Arguments... arguments)
    : Base(elementSize, arguments..., kMovesBitwise<X>)
  {
  }
  TelementHooks(const TelementHooks& other)
    : Base(other)
  {
    this->copyElements(0, other.fData, other.fLength);
  }
  TelementHooks(TelementHooks&& other) noexcept = default;
  TelementHooks& operator=(const TelementHooks& other) = default;
  TelementHooks& operator=(TelementHooks&& other) noexcept = default;
  ~TelementHooks() override { Base::changePhysicalSizeTo(0); }

protected:
  void construct(unsigned int from, unsigned int count) override
  {
    std::uninitialized_default_construct_n(elements(this->address(from)), count);
  }
  void destruct(unsigned int from, unsigned int count) override
  {
    std::destroy_n(elements(this->address(from)), count);
  }
  void shuffle(unsigned int from, int by, unsigned int count) override
  {
    if constexpr (kMovesBitwise<X>)
      Base::shuffle(from, by, count);
    else
    {
      // From the end that is moved to, so that no element comes to a place that is still taken.
      X* const first = elements(this->address(from));
      for (unsigned int i = 0; i < count; ++i)
      {
        X* const source = first + (by < 0 ? i : count - 1 - i);
        ::new (static_cast<void*>(source + by)) X(std::move(*source));
        source->~X();
      }
    }
  }
  void initialize(char* to, char* from, unsigned int count) override
  {
    std::uninitialized_copy_n(elements(from), count, elements(to));
  }
  void destroy(char* at, unsigned int count) override { std::destroy_n(elements(at), count); }

private:
  static X* elements(char* at) noexcept { return reinterpret_cast<X*>(at); }
};

/// An array of \p X over \p Base: Tarray, or a TobjArray with hooks.
///
/// \code
///   TdoubleArray knots{0.0, 0.5, 1.0};
///   knots.addLast(2.0);
///   knots.insert(0.25, 1);
///   std::sort(knots.begin(), knots.end());
/// \endcode
///
/// Of the lists of values in braces and in parentheses it is as with std::vector: TuInt32Array{16} has one element,
/// TuInt32Array(16) none and a growth step of 16.
template <class X, class Base = Tarray>
class TtypedArray : public TarrayElements<X, Base>
{
  static constexpr bool kBytes = std::is_same_v<Base, Tarray>;
  static_assert(!kBytes || std::is_trivially_copyable_v<X>, "elements that are not bytes need a TtypedObjArray");

public:
  explicit TtypedArray(unsigned int sizeIncrement = 4)
    : TarrayElements<X, Base>(unsigned(sizeof(X)), sizeIncrement)
  {
  }
  TtypedArray(std::initializer_list<X> values)
    : TtypedArray()
  {
    this->copyElements(0, values.begin(), unsigned(values.size()));
  }

  /// Appends.
  long addLast(const X& value)
  {
    if constexpr (kBytes && !std::is_array_v<X>)
    {
      const unsigned int length = this->fLength;
      if (length == this->fPhysicalSize)
      {
        const X copy(value); // by its address compilers would put each value into memory
        this->expandArray(sizeof(X) == 1 ? this->lengthPlus(1) : length + 1);
        ::new (static_cast<void*>(this->data() + length)) X(copy);
      }
      else
        ::new (static_cast<void*>(this->data() + length)) X(value);
      this->fLength = length + 1; // which the element, for all the compiler knows, might have overwritten
      return 0;
    }
    else
      return this->insertElement(&value, this->fLength, 1);
  }
  long addLast(const X* values, unsigned int count) { return this->insertElement(values, this->fLength, count); }

  /// Inserts before \p index; past the end it appends.
  long insert(const X& value, unsigned int index)
  {
    if constexpr (kBytes && !std::is_array_v<X>)
    {
      const unsigned int length = this->fLength;
      if (index < length && length < this->fPhysicalSize)
      {
        const X copy(value); // which may lie in the array
        X* const at = this->data() + index;
        std::memmove(static_cast<void*>(at + 1), at, std::size_t(length - index) * sizeof(X));
        ::new (static_cast<void*>(at)) X(copy);
        this->fLength = length + 1;
        return 0;
      }
    }
    return this->insertElement(&value, index, 1);
  }
  long insert(const X* values, unsigned int count, unsigned int index)
  {
    return this->insertElement(values, index, count);
  }

  /// Looks for the first element equal to \p value: the status is 0, or kNotFound with the length for an index.
  /// Elements that are bytes are compared as bytes, so that +0.0 is not -0.0. Linear.
  long find(const X& value) const
  {
    unsigned int index;
    return find(value, index);
  }
  long find(const X& value, unsigned int& index) const
  {
    if constexpr (kBytes)
      return this->findElement(&value, index);
    else
    {
      const unsigned int at = unsigned(std::find(this->begin(), this->end(), value) - this->begin());
      index = at;
      return at < this->fLength ? 0 : Tarray::kNotFound;
    }
  }

  /// Removes the first element equal to \p value, or returns kNotFound.
  long remove(const X& value)
  {
    unsigned int index;
    const long status = find(value, index);
    if (status == 0)
      removeAt(index);
    return status;
  }
  long removeAt(unsigned int index, unsigned int count = 1)
  {
    if constexpr (!kBytes)
      return Base::removeAt(index, count);
    this->removeBytes(index, count);
    return 0;
  }
  long removeLast(unsigned int count = 1)
  {
    if constexpr (!kBytes)
      return Base::removeLast(count);
    this->fLength -= std::min(count, this->fLength);
    return 0;
  }

  /// Makes this array the elements of \p array, or \p count of them from the first or from \p start on, as far as there
  /// are so many. No spare room is left.
  long copy(const TtypedArray& array) { return copy(array, 0, array.fLength); }
  long copy(const TtypedArray& array, unsigned int count) { return copy(array, 0, count); }
  long copy(const TtypedArray& array, unsigned int start, unsigned int count)
  {
    start = std::min(start, array.fLength);
    return this->copyElements(0, array.address(start), std::min(count, array.fLength - start));
  }

  /// Appends what copy() would copy. No spare room is left.
  long catenate(const TtypedArray& array) { return catenate(array, 0, array.fLength); }
  long catenate(const TtypedArray& array, unsigned int count) { return catenate(array, 0, count); }
  long catenate(const TtypedArray& array, unsigned int start, unsigned int count)
  {
    start = std::min(start, array.fLength);
    count = std::min(count, array.fLength - start);
    return count != 0 ? this->copyElements(this->fLength, array.address(start), count) : 0;
  }

  /// Makes the array one of exactly \p count elements with that value, and sets the growth step.
  long createAndSet(const X& value, unsigned int count, unsigned int sizeIncrement)
  {
    return this->createAndInitialise(const_cast<void*>(static_cast<const void*>(&value)), count, sizeIncrement);
  }

  /// Gives the caller a copy of the elements, in a buffer of just their size that setArray() of another array takes
  /// over; null if there are none. sReleaseBuffer() frees it, and does not end the life of elements that have one.
  long copyTo(void** const copy) const
  {
    *copy = this->copyOfElements();
    return 0;
  }
};

/// An array of elements that are constructed, copied and destroyed as their class says.
template <class X>
using TtypedObjArray = TtypedArray<X, TelementHooks<X, TobjArray>>;
