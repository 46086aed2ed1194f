/// \file
/// Tarray: the growable, contiguous array under every typed array of the library.
///
/// Use a typed member of the family (TdoubleArray and the others in NumberArrays.h, PtrArrays.h, StringArrays.h) and
/// derive from TtypedArray for elements of your own; use Tarray itself for code that handles arrays of any element.
/// Elements are moved and copied as bytes. Appending is constant on average, since the growth step widens with the
/// array; inserting and removing move the elements behind. The main trap: an index is not checked, and whatever grows
/// or shrinks the buffer moves all elements to another address.

#pragma once

#include "Foundation/Platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

class TfootprintInfo;

/// A block of equal-sized elements with a logical length, a physical size and a growth step.
///
/// Operations that change the array return the status 0. When there is no memory, or a size does not fit 32 bits, they
/// throw TmemoryException and leave the array as it was. Indices and counts beyond the end are brought back to it
/// where the comment does not say otherwise. Values and arrays given as arguments may lie in the array itself.
///
/// Buffers of kMappedBytes or more are mapped memory of the process allocator, smaller ones come from malloc(). One
/// that grows by steps there may have up to half its size in addition, for the next steps; pack() gives that back too.
class FOUNDATION_API Tarray
{
public:
  /// The status of a search that found nothing.
  static constexpr long kNotFound = 150;

  /// From this size in bytes on, a buffer is mapped memory.
  static constexpr unsigned int kMappedBytes = 64512;

  /// An empty array without a buffer. \p elementSize is in bytes; see setSizeIncrement() for the other.
  Tarray(unsigned int elementSize, unsigned int sizeIncrement);

  /// A copy of the elements, without spare room, and of the growth step.
  Tarray(const Tarray& other);

  /// Takes over the buffer and leaves \p other empty.
  Tarray(Tarray&& other) noexcept;

  /// Copies the elements, without spare room, or takes over the buffer; the growth step stays. Both arrays must be of
  /// one class, which typed arrays see to.
  Tarray& operator=(const Tarray& other);
  Tarray& operator=(Tarray&& other) noexcept;

  virtual ~Tarray();

  /// Makes the array one of exactly \p count elements, whose values are whatever the memory held, and sets the step.
  virtual long create(unsigned int count, unsigned int increment);

  /// Makes room for exactly \p size elements, cutting those behind. With 0 the buffer is freed.
  virtual long changePhysicalSizeTo(unsigned int size);

  /// Makes the array one of exactly \p count copies of the element at \p value, and sets the step.
  virtual long createAndInitialise(void* value, unsigned int count, unsigned int increment);

protected:
  /// Gets the first buffer, of exactly \p size elements; the array has none.
  virtual long allocateArray(unsigned int size);

  /// Sets the length to \p length. A buffer that is too small grows by whole steps, and a step below a quarter of the
  /// length then widens by a quarter. New elements are not cleared.
  virtual long expandArray(unsigned int length);

public:
  unsigned int length() const noexcept { return fLength; }
  unsigned int physicalSize() const noexcept { return fPhysicalSize; }
  bool isEmpty() const noexcept { return fLength == 0; }

  /// By how many elements the buffer grows next; 0 counts as 1. The array widens it as it grows.
  unsigned int sizeIncrement() const noexcept { return fSizeIncrement; }
  void setSizeIncrement(unsigned int increment) noexcept { fSizeIncrement = increment; }

  /// Removes all elements and keeps the buffer.
  long reset() { return expandArray(0); }

  /// Gives spare room back.
  long pack() { return changePhysicalSizeTo(fLength); }

  /// Makes room for \p count elements beyond the length, exactly, if there is less.
  long buffer(unsigned int count);

  /// Cuts the array to \p length elements or grows it. New elements are not cleared.
  long changeLogicalSizeTo(unsigned int length) { return expandArray(length); }

  /// The same for the length plus \p delta; below 0 counts as 0.
  long changeLogicalSizeBy(long delta);

  /// Removes \p count elements from \p index on.
  long removeAt(unsigned int index, unsigned int count = 1);

  /// Removes the last \p count elements.
  long removeLast(unsigned int count = 1) { return expandArray(fLength - (count < fLength ? count : fLength)); }

  /// Takes over the buffer \p data of \p physicalSize elements of which \p length are in use, and frees the present
  /// one. The buffer must come from sAllocateBuffer() or from copyTo() of an array; null makes the array empty. The
  /// array's own buffer is cut to these sizes, if it is larger. When it throws, the buffer is still the caller's.
  long setArray(void* data, unsigned int length, unsigned int physicalSize);

  /// A buffer as the arrays use them, of at least \p bytes. It is released by the array that takes it over, or by
  /// sReleaseBuffer() with the same size.
  static void* sAllocateBuffer(unsigned int bytes);
  static void sReleaseBuffer(void* buffer, unsigned int bytes) noexcept;

  /// Adds the memory of \p array to \p info under \p name, without what malloc() has in addition. A null array counts
  /// for nothing.
  static void sGetArrayFootprint(const Tarray* array, TfootprintInfo& info, const char* name);

  /// Whether length, size and buffer agree. For tests and assertions.
  bool validate() const noexcept;

protected:
  /// The element at \p index, which is not checked.
  char* address(unsigned int index) const noexcept { return fData + std::size_t(index) * fElementSize; }

  /// Inserts \p count elements from \p source before \p index; an index past the end appends.
  long insertElement(const void* source, unsigned int index, unsigned int count);

  /// Removes the first element whose bytes are those at \p value, or returns kNotFound.
  long removeElement(const void* value);

  /// Replaces what there is from \p at on by \p count elements from \p source; no spare room is left.
  long copyElements(unsigned int at, const void* source, unsigned int count);

  /// A copy of all elements in a buffer of just that size, or null if there are none.
  char* copyOfElements() const;

  /// Looks for the first element whose bytes are all those at \p value. The status is 0, or kNotFound with the length
  /// for an index. Linear.
  long findElement(const void* value, unsigned int& index) const noexcept;

  /// Moves a buffer from \p oldBytes to \p newBytes, neither of which is 0, and returns its new address. When it
  /// throws, \p buffer is what it was.
  static char* reallocate(unsigned int oldBytes, unsigned int newBytes, char* buffer);

  /// reallocate() for a buffer that grows by steps: one that malloc() gave may stay for some of them.
  static char* growBuffer(unsigned int oldBytes, unsigned int newBytes, char* buffer);

  /// Bytes of \p count elements. Throws TmemoryException when 32 bits do not hold them.
  unsigned int bytesOf(unsigned int count) const;

  /// The length plus \p count. Throws TmemoryException when 32 bits do not hold it.
  unsigned int lengthPlus(unsigned int count) const;

  /// The physical size that expandArray() takes for \p length elements, for which there is no room. Throws
  /// TmemoryException when 32 bits do not hold it.
  unsigned int grownSize(unsigned int length) const;

  /// What expandArray() does to the step after a buffer has grown for \p length elements: at least 1, and wider if it
  /// was below a quarter of them.
  void widenIncrement(unsigned int length) noexcept;

  /// Frees the buffer and takes over \p data. No element is looked at.
  void replaceBuffer(char* data, unsigned int length, unsigned int physicalSize) noexcept;

  /// Where \p source lies in the buffer, in bytes, or kOutside. To be asked before the buffer moves.
  static constexpr std::size_t kOutside = SIZE_MAX;
  std::size_t offsetOf(const void* source) const noexcept;

  /// removeAt() for elements that are bytes.
  void removeBytes(unsigned int index, unsigned int count) noexcept
  {
    if (index >= fLength)
      return;
    const unsigned int tail = count < fLength - index ? fLength - index - count : 0;
    if (tail != 0)
      std::memmove(address(index), address(index + count), std::size_t(tail) * fElementSize);
    fLength = index + tail;
  }

  unsigned int fLength = 0;       // elements in use, at most fPhysicalSize
  unsigned int fPhysicalSize = 0; // elements that the buffer holds
  unsigned int fSizeIncrement;    // elements to grow by
  unsigned int fElementSize;      // bytes; fixed
  char* fData = nullptr;          // null exactly when fPhysicalSize is 0
};

static_assert(sizeof(Tarray) == 16 + 2 * sizeof(void*),
              "four words and the buffer follow the table of virtual functions");
