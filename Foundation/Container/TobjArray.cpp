#include "Foundation/Container/TobjArray.h"

#include "Foundation/Debug/Texception.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

namespace {

// shuffle() counts places in an int.
void checkCount(unsigned int count)
{
  if (count > INT_MAX)
    throw TmemoryException();
}

// A buffer that is not yet, or no longer, that of an array. It does not look after elements.
class LooseBuffer
{
public:
  explicit LooseBuffer(unsigned int bytes)
    : fBytes(bytes)
    , fData(bytes != 0 ? static_cast<char*>(Tarray::sAllocateBuffer(bytes)) : nullptr)
  {
  }
  LooseBuffer(const LooseBuffer&) = delete;
  LooseBuffer& operator=(const LooseBuffer&) = delete;
  ~LooseBuffer()
  {
    if (fData)
      Tarray::sReleaseBuffer(fData, fBytes);
  }

  char* data() const { return fData; }
  char* take() { return std::exchange(fData, nullptr); }

private:
  unsigned int fBytes;
  char* fData;
};

} // namespace

TobjArray::TobjArray(unsigned int elementSize, unsigned int sizeIncrement, bool movesBitwise)
  : Tarray(elementSize, sizeIncrement)
  , fMovesBitwise(movesBitwise)
{
}

TobjArray::TobjArray(const TobjArray& other) noexcept
  : TobjArray(other.fElementSize, other.fSizeIncrement, other.fMovesBitwise)
{
}

TobjArray& TobjArray::operator=(const TobjArray& other)
{
  if (this != &other)
    copyElements(0, other.fData, other.fLength);
  return *this;
}

void TobjArray::construct(unsigned int, unsigned int) {}

void TobjArray::destruct(unsigned int from, unsigned int count)
{
  destroy(address(from), count);
}

void TobjArray::shuffle(unsigned int from, int by, unsigned int count)
{
  char* const at = address(from);
  std::memmove(at + std::ptrdiff_t(by) * std::ptrdiff_t(fElementSize), at, std::size_t(count) * fElementSize);
}

void TobjArray::initialize(char* to, char* from, unsigned int count)
{
  std::memcpy(to, from, std::size_t(count) * fElementSize);
}

void TobjArray::destroy(char*, unsigned int) {}

long TobjArray::create(unsigned int count, unsigned int increment)
{
  checkCount(count);
  LooseBuffer fresh(bytesOf(count));
  char* const data = fData;
  const unsigned int length = fLength, size = fPhysicalSize;
  // construct() works on the buffer that the array has.
  fData = fresh.data();
  fLength = fPhysicalSize = count;
  try
  {
    if (count != 0)
      construct(0, count);
  }
  catch (...)
  {
    fData = data;
    fLength = length;
    fPhysicalSize = size;
    throw;
  }
  fresh.take();
  if (length != 0)
    destroy(data, length);
  if (data)
    sReleaseBuffer(data, size * fElementSize);
  fSizeIncrement = increment;
  return 0;
}

long TobjArray::changePhysicalSizeTo(unsigned int size)
{
  if (size == fPhysicalSize)
    return 0;
  if (!fData)
    return allocateArray(size);
  checkCount(size);
  const unsigned int kept = std::min(fLength, size);
  if (size > fPhysicalSize && fMovesBitwise)
    return Tarray::changePhysicalSizeTo(size);
  LooseBuffer fresh(bytesOf(size));
  if (kept != 0 && fMovesBitwise)
    std::memcpy(fresh.data(), fData, std::size_t(kept) * fElementSize);
  else if (kept != 0)
    initialize(fresh.data(), fData, kept);
  const unsigned int ended = fMovesBitwise ? kept : 0;
  if (ended < fLength)
    destruct(ended, fLength - ended);
  replaceBuffer(fresh.take(), kept, size);
  return 0;
}

long TobjArray::createAndInitialise(void* value, unsigned int count, unsigned int increment)
{
  checkCount(count);
  LooseBuffer fresh(bytesOf(count));
  unsigned int done = 0;
  try
  {
    for (; done < count; ++done)
      initialize(fresh.data() + std::size_t(done) * fElementSize, static_cast<char*>(value), 1);
  }
  catch (...)
  {
    if (done != 0)
      destroy(fresh.data(), done);
    throw;
  }
  if (fLength != 0)
    destruct(0, fLength);
  replaceBuffer(fresh.take(), count, count);
  fSizeIncrement = increment;
  return 0;
}

long TobjArray::allocateArray(unsigned int size)
{
  checkCount(size);
  return Tarray::allocateArray(size);
}

void TobjArray::makeRoom(unsigned int length)
{
  if (length <= fPhysicalSize)
    return;
  const unsigned int grown = fData ? length : 0; // the first buffer does not widen the step
  changePhysicalSizeTo(grownSize(length));
  widenIncrement(grown);
}

long TobjArray::expandArray(unsigned int length)
{
  makeRoom(length);
  if (length > fLength)
    construct(fLength, length - fLength);
  else if (length < fLength)
    destruct(length, fLength - length);
  fLength = length;
  return 0;
}

long TobjArray::removeAt(unsigned int index, unsigned int count)
{
  if (index >= fLength || count == 0)
    return 0;
  count = std::min(count, fLength - index);
  const unsigned int tail = fLength - index - count;
  destruct(index, count);
  if (tail != 0)
    shuffle(index + count, -int(count), tail);
  fLength -= count;
  return 0;
}

long TobjArray::insertElement(const void* source, unsigned int index, unsigned int count)
{
  const unsigned int length = lengthPlus(count);
  if (count == 0)
    return 0;
  const std::size_t offset = offsetOf(source);
  makeRoom(length);
  index = std::min(index, fLength);
  const unsigned int tail = fLength - index;
  if (tail != 0)
    shuffle(index, int(count), tail);
  char* const at = address(index);
  char* from = const_cast<char*>(static_cast<const char*>(source));
  // Of elements of this array, those behind the gap have moved up with the tail.
  unsigned int before = count;
  char* behind = nullptr;
  if (offset != kOutside)
  {
    from = fData + offset;
    before = from < at ? unsigned(std::min<std::size_t>(std::size_t(at - from) / fElementSize, count)) : 0;
    behind = address(index + count) + (from + std::size_t(before) * fElementSize - at);
  }
  unsigned int done = 0;
  try
  {
    if (before != 0)
      initialize(at, from, before);
    done = before;
    if (before != count)
      initialize(address(index + before), behind, count - before);
  }
  catch (...)
  {
    if (done != 0)
      destroy(at, done);
    if (tail != 0)
      shuffle(index + count, -int(count), tail);
    throw;
  }
  fLength = length;
  return 0;
}

long TobjArray::copyElements(unsigned int at, const void* source, unsigned int count)
{
  at = std::min(at, fLength);
  if (count > INT_MAX - at)
    throw TmemoryException();
  LooseBuffer fresh(bytesOf(at + count));
  char* const place = fresh.data() + std::size_t(at) * fElementSize;
  if (count != 0)
    initialize(place, const_cast<char*>(static_cast<const char*>(source)), count);
  try
  {
    if (at != 0 && fMovesBitwise)
      std::memcpy(fresh.data(), fData, std::size_t(at) * fElementSize);
    else if (at != 0)
      initialize(fresh.data(), fData, at);
  }
  catch (...)
  {
    if (count != 0)
      destroy(place, count);
    throw;
  }
  const unsigned int ended = fMovesBitwise ? at : 0;
  if (ended < fLength)
    destruct(ended, fLength - ended);
  replaceBuffer(fresh.take(), at + count, at + count);
  return 0;
}

char* TobjArray::copyOfElements() const
{
  LooseBuffer copy(bytesOf(fLength));
  if (fLength != 0)
    const_cast<TobjArray*>(this)->initialize(copy.data(), fData, fLength);
  return copy.take();
}
