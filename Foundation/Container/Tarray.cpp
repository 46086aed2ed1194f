#include "Foundation/Container/Tarray.h"

#include "Foundation/Container/TobjArray.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TfootprintInfo.h"
#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Platform/Types.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

namespace {

constexpr char kTag[] = "Arrays";

// An empty array has no address to copy from.
void copyBytes(char* to, const void* from, std::size_t bytes)
{
  if (bytes != 0)
    std::memmove(to, from, bytes);
}

// One element. With a size that the compiler knows, the usual ones become a load and a store.
inline void copyElement(char* to, const void* from, unsigned int size)
{
  switch (size)
  {
  case 1: std::memcpy(to, from, 1); break;
  case 4: std::memcpy(to, from, 4); break;
  case 8: std::memcpy(to, from, 8); break;
  case 12: std::memcpy(to, from, 12); break;
  default: std::memmove(to, from, size); break;
  }
}

// The index of the first of \p count words that is the one at \p value, or \p count. Whole blocks are compared without
// a branch, since a loop that can end at each word is not turned into vector instructions.
template <class Word>
unsigned int findWord(const char* data, unsigned int count, const void* value)
{
  typedef Word Words __attribute__((vector_size(16)));
  typedef TuInt64 Halves __attribute__((vector_size(16)));
  constexpr unsigned int kLanes = 16 / sizeof(Word);
  constexpr unsigned int kBlock = 4 * kLanes;
  Word wanted;
  std::memcpy(&wanted, value, sizeof wanted);
  const Words all = wanted - Words{};
  unsigned int i = 0;
  for (; count - i >= kBlock; i += kBlock)
  {
    Words words[4];
    std::memcpy(words, data + std::size_t(i) * sizeof(Word), sizeof words);
    const auto equal = (words[0] == all) | (words[1] == all) | (words[2] == all) | (words[3] == all);
    const Halves halves = reinterpret_cast<Halves>(equal);
    if ((halves[0] | halves[1]) != 0)
      break;
  }
  for (; i < count; ++i)
  {
    Word word;
    std::memcpy(&word, data + std::size_t(i) * sizeof(Word), sizeof word);
    if (word == wanted)
      break;
  }
  return i;
}

// The same for elements of any size. The first bytes decide nearly always, and cost less than a call.
template <class Word>
unsigned int findBytes(const char* data, unsigned int count, const char* value, unsigned int size)
{
  Word wanted;
  std::memcpy(&wanted, value, sizeof wanted);
  unsigned int i = 0;
  for (; i < count; ++i, data += size)
  {
    Word word;
    std::memcpy(&word, data, sizeof word);
    if (word == wanted && std::memcmp(data + sizeof word, value + sizeof word, size - sizeof word) == 0)
      break;
  }
  return i;
}

} // namespace

Tarray::Tarray(unsigned int elementSize, unsigned int sizeIncrement)
  : fSizeIncrement(sizeIncrement)
  , fElementSize(elementSize)
{
}

Tarray::Tarray(const Tarray& other)
  : Tarray(other.fElementSize, other.fSizeIncrement)
{
  Tarray::copyElements(0, other.fData, other.fLength);
}

Tarray::Tarray(Tarray&& other) noexcept
  : Tarray(other.fElementSize, other.fSizeIncrement)
{
  *this = std::move(other);
}

Tarray& Tarray::operator=(const Tarray& other)
{
  if (this != &other)
    copyElements(0, other.fData, other.fLength);
  return *this;
}

Tarray& Tarray::operator=(Tarray&& other) noexcept
{
  if (this != &other)
  {
    replaceBuffer(other.fData, other.fLength, other.fPhysicalSize);
    other.fData = nullptr;
    other.fLength = other.fPhysicalSize = 0;
  }
  return *this;
}

Tarray::~Tarray()
{
  replaceBuffer(nullptr, 0, 0);
}

long Tarray::create(unsigned int count, unsigned int increment)
{
  char* data = count != 0 ? static_cast<char*>(sAllocateBuffer(bytesOf(count))) : nullptr;
  replaceBuffer(data, count, count);
  fSizeIncrement = increment;
  return 0;
}

long Tarray::changePhysicalSizeTo(unsigned int size)
{
  if (size == 0)
    replaceBuffer(nullptr, 0, 0);
  else if (!fData)
    return allocateArray(size);
  else if (size != fPhysicalSize)
  {
    fData = reallocate(bytesOf(fPhysicalSize), bytesOf(size), fData);
    fPhysicalSize = size;
    fLength = std::min(fLength, size);
  }
  return 0;
}

long Tarray::createAndInitialise(void* value, unsigned int count, unsigned int increment)
{
  // The value may lie in the buffer that goes.
  char* data = count != 0 ? static_cast<char*>(sAllocateBuffer(bytesOf(count))) : nullptr;
  for (unsigned int i = 0; i < count; ++i)
    copyElement(data + std::size_t(i) * fElementSize, value, fElementSize);
  replaceBuffer(data, count, count);
  fSizeIncrement = increment;
  return 0;
}

long Tarray::allocateArray(unsigned int size)
{
  fData = static_cast<char*>(sAllocateBuffer(bytesOf(size)));
  fPhysicalSize = size;
  return 0;
}

long Tarray::expandArray(unsigned int length)
{
  if (length > fPhysicalSize)
    grow(length);
  fLength = length;
  return 0;
}

void Tarray::grow(unsigned int length)
{
  const TuInt64 step = std::max(fSizeIncrement, 1U);
  const TuInt64 steps = step < length ? (length - fPhysicalSize - 1) / step + 1 : 1;
  const TuInt64 size = fPhysicalSize + steps * step;
  if (size > UINT_MAX)
    throw TmemoryException();
  const bool widens = fData && step < INT_MAX && step * 4 < length;
  changePhysicalSizeTo(unsigned(size));
  fSizeIncrement = unsigned(widens ? 1 + step + step / 4 : step);
}

long Tarray::buffer(unsigned int count)
{
  const unsigned int size = lengthPlus(count);
  return size > fPhysicalSize ? changePhysicalSizeTo(size) : 0;
}

long Tarray::changeLogicalSizeBy(long delta)
{
  const Tint64 length = Tint64(fLength) + std::clamp<Tint64>(delta, -Tint64(UINT_MAX), UINT_MAX);
  if (length > UINT_MAX)
    throw TmemoryException();
  return changeLogicalSizeTo(unsigned(std::max<Tint64>(length, 0)));
}

long Tarray::removeAt(unsigned int index, unsigned int count)
{
  // Typed arrays know their kind and do not come here.
  if (TobjArray* objects = dynamic_cast<TobjArray*>(this))
    return objects->removeAt(index, count);
  removeBytes(index, count);
  return 0;
}

void Tarray::removeBytes(unsigned int index, unsigned int count) noexcept
{
  if (index >= fLength)
    return;
  count = std::min(count, fLength - index);
  copyBytes(address(index), address(index + count), address(fLength) - address(index + count));
  fLength -= count;
}

long Tarray::setArray(void* data, unsigned int length, unsigned int physicalSize)
{
  const unsigned int bytes = bytesOf(physicalSize);
  if (data != fData)
  {
    changePhysicalSizeTo(0);
    fData = static_cast<char*>(data);
  }
  if (fData && physicalSize == 0)
    sReleaseBuffer(std::exchange(fData, nullptr), bytes);
  fPhysicalSize = fData ? physicalSize : 0;
  fLength = std::min(length, fPhysicalSize);
  return 0;
}

void* Tarray::sAllocateBuffer(unsigned int bytes)
{
  void* buffer = bytes < kMappedBytes ? std::malloc(std::max(bytes, 1U)) : mmapAlloc(bytes, kTag);
  if (!buffer)
    throw TmemoryException();
  return buffer;
}

void Tarray::sReleaseBuffer(void* buffer, unsigned int bytes) noexcept
{
  if (bytes < kMappedBytes)
    std::free(buffer);
  else
    mmapFree(buffer);
}

char* Tarray::reallocate(unsigned int oldBytes, unsigned int newBytes, char* buffer)
{
  const bool wasMapped = oldBytes >= kMappedBytes, isMapped = newBytes >= kMappedBytes;
  void* moved;
  if (wasMapped != isMapped)
  {
    moved = sAllocateBuffer(newBytes);
    std::memcpy(moved, buffer, std::min(oldBytes, newBytes));
    sReleaseBuffer(buffer, oldBytes);
  }
  else if (isMapped)
    moved = mmapRealloc(buffer, newBytes, kTag);
  else
    moved = std::realloc(buffer, std::max(newBytes, 1U));
  if (!moved)
    throw TmemoryException();
  return static_cast<char*>(moved);
}

void Tarray::replaceBuffer(char* data, unsigned int length, unsigned int physicalSize) noexcept
{
  if (fData)
    sReleaseBuffer(fData, fPhysicalSize * fElementSize);
  fData = data;
  fLength = length;
  fPhysicalSize = physicalSize;
}

unsigned int Tarray::bytesOf(unsigned int count) const
{
  const TuInt64 bytes = TuInt64(count) * fElementSize;
  if (bytes > UINT_MAX)
    throw TmemoryException();
  return unsigned(bytes);
}

unsigned int Tarray::lengthPlus(unsigned int count) const
{
  if (count > UINT_MAX - fLength)
    throw TmemoryException();
  return fLength + count;
}

std::ptrdiff_t Tarray::offsetOf(const void* source) const noexcept
{
  const char* bytes = static_cast<const char*>(source);
  const bool inside = fData && !std::less<>()(bytes, fData) && std::less<>()(bytes, address(fLength));
  return inside ? bytes - fData : -1;
}

long Tarray::insertElement(const void* source, unsigned int index, unsigned int count)
{
  const unsigned int length = lengthPlus(count);
  const std::ptrdiff_t offset = offsetOf(source);
  const unsigned int tail = index < fLength ? fLength - index : 0;
  if (length > fPhysicalSize)
    expandArray(length);
  else
    fLength = length;
  char* const at = address(length - count - tail);
  const std::size_t bytes = std::size_t(count) * fElementSize;
  copyBytes(at + bytes, at, std::size_t(tail) * fElementSize);
  if (offset < 0)
  {
    if (count == 1)
      copyElement(at, source, fElementSize);
    else
      copyBytes(at, source, bytes);
  }
  else
  {
    // What lay behind the gap has moved up with the tail.
    const char* const from = fData + offset;
    const std::size_t before = from < at ? std::min(std::size_t(at - from), bytes) : 0;
    copyBytes(at, from, before);
    copyBytes(at + before, from + before + bytes, bytes - before);
  }
  return 0;
}

long Tarray::removeElement(const void* value)
{
  unsigned int index;
  const long status = findElement(value, index);
  if (status == 0)
    removeBytes(index, 1);
  return status;
}

long Tarray::copyElements(unsigned int at, const void* source, unsigned int count)
{
  at = std::min(at, fLength);
  if (count > UINT_MAX - at)
    throw TmemoryException();
  const unsigned int length = at + count;
  const std::size_t kept = std::size_t(at) * fElementSize;
  if (length == fPhysicalSize)
    fLength = length;
  else if (at != 0 && at == fLength)
  {
    const std::ptrdiff_t offset = offsetOf(source);
    changePhysicalSizeTo(length);
    fLength = length;
    source = offset < 0 ? source : fData + offset;
  }
  else
  {
    // What is replaced may be the source, and is not worth moving along.
    char* data = length != 0 ? static_cast<char*>(sAllocateBuffer(bytesOf(length))) : nullptr;
    copyBytes(data, fData, kept);
    copyBytes(data + kept, source, std::size_t(count) * fElementSize);
    replaceBuffer(data, length, length);
    return 0;
  }
  copyBytes(address(at), source, std::size_t(count) * fElementSize);
  return 0;
}

char* Tarray::copyOfElements() const
{
  const unsigned int bytes = bytesOf(fLength);
  char* const copy = fLength != 0 ? static_cast<char*>(sAllocateBuffer(bytes)) : nullptr;
  copyBytes(copy, fData, bytes);
  return copy;
}

long Tarray::findElement(const void* value, unsigned int& index) const noexcept
{
  const char* const bytes = static_cast<const char*>(value);
  unsigned int at = 0;
  switch (fElementSize)
  {
  case 0: break;
  case 1: at = findWord<TuInt8>(fData, fLength, value); break;
  case 2: at = findWord<TuInt16>(fData, fLength, value); break;
  case 4: at = findWord<TuInt32>(fData, fLength, value); break;
  case 8: at = findWord<TuInt64>(fData, fLength, value); break;
  default:
    at = fElementSize < 8 ? findBytes<TuInt8>(fData, fLength, bytes, fElementSize)
                          : findBytes<TuInt64>(fData, fLength, bytes, fElementSize);
  }
  index = at;
  return at < fLength ? 0 : kNotFound;
}

void Tarray::sGetArrayFootprint(const Tarray* array, TfootprintInfo& info, const char* name)
{
  if (array)
    info.add(name, array->address(array->fLength) - array->fData, array->address(array->fPhysicalSize) - array->fData);
}

bool Tarray::validate() const noexcept
{
  return fLength <= fPhysicalSize && (fData == nullptr) == (fPhysicalSize == 0) &&
         TuInt64(fPhysicalSize) * fElementSize <= UINT_MAX;
}
