#include "Foundation/Container/Tarray.h"

#include "Foundation/Container/TobjArray.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TfootprintInfo.h"
#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Memory/UnclearedBlocks.h"
#include "Foundation/Platform/Memory.h"
#include "Foundation/Platform/Sanitizer.h"
#include "Foundation/Platform/Types.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <utility>

#ifdef __SSE2__
#  include <emmintrin.h>
#endif

namespace {

constexpr char kTag[] = "Arrays";

// Up to this size a buffer is copied to another one: realloc() goes past the allocator's lists of small free blocks.
constexpr unsigned int kCopiedBytes = 1024;

// A small buffer that grows gets a half more. Not where writes behind it are to be noticed.
#ifdef FOUNDATION_ASAN
constexpr bool kSpares = false;
#else
constexpr bool kSpares = true;
#endif

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

#ifdef __SSE2__

// All bits are set in those of the 16 bytes from \p at on whose word is the one that \p all repeats.
template <class Word>
__m128i equalWords(const char* at, __m128i all)
{
  const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  if constexpr (sizeof(Word) == 1)
    return _mm_cmpeq_epi8(words, all);
  else if constexpr (sizeof(Word) == 2)
    return _mm_cmpeq_epi16(words, all);
  const __m128i equal = _mm_cmpeq_epi32(words, all);
  if constexpr (sizeof(Word) == 8) // both halves of which must be equal
    return _mm_and_si128(equal, _mm_shuffle_epi32(equal, _MM_SHUFFLE(2, 3, 0, 1)));
  return equal;
}

// The same for 64 bytes, a bit for each.
template <class Word>
TuInt64 equalBytes(const char* at, __m128i all)
{
  const __m128i first = equalWords<Word>(at, all), second = equalWords<Word>(at + 16, all);
  const __m128i third = equalWords<Word>(at + 32, all), fourth = equalWords<Word>(at + 48, all);
  const __m128i any = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth));
  if (_mm_movemask_epi8(any) == 0) [[likely]]
    return 0;
  const auto bits = [](__m128i equal) { return TuInt64(_mm_movemask_epi8(equal)); };
  return bits(first) | bits(second) << 16 | bits(third) << 32 | bits(fourth) << 48;
}

#endif

// The index of the first of \p count words that is the one at \p value, or \p count. Compilers make no vector
// instructions of a loop that may end at each word.
template <class Word>
unsigned int findWord(const char* data, unsigned int count, const char* value)
{
  Word wanted;
  std::memcpy(&wanted, value, sizeof wanted);
  unsigned int i = 0;
#ifdef __SSE2__
  constexpr unsigned int kBlock = 64 / sizeof(Word);
  if (count >= kBlock)
  {
    Word repeated[16 / sizeof(Word)];
    std::fill(std::begin(repeated), std::end(repeated), wanted);
    const __m128i all = _mm_loadu_si128(reinterpret_cast<const __m128i*>(repeated));
    for (const unsigned int last = count - kBlock;; i = std::min(i + kBlock, last))
    {
      if (const TuInt64 bits = equalBytes<Word>(data + std::size_t(i) * sizeof(Word), all))
        return i + unsigned(std::countr_zero(bits)) / unsigned(sizeof(Word));
      if (i == last) // which reached back to words that were not equal
        return count;
    }
  }
#endif
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
#pragma GCC unroll 4
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
  // Typed arrays know their kind and do not come here.
  if (TobjArray* objects = dynamic_cast<TobjArray*>(this))
    *objects = static_cast<const TobjArray&>(other);
  else if (this != &other)
    copyElements(0, other.fData, other.fLength);
  return *this;
}

Tarray& Tarray::operator=(Tarray&& other) noexcept
{
  if (this != &other)
  {
    changePhysicalSizeTo(0);
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
  else
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
  {
    const unsigned int size = grownSize(length);
    const unsigned int grown = fData ? length : 0; // the first buffer does not widen the step
    if (!fData)
      allocateArray(size);
    else
    {
      fData = growBuffer(fPhysicalSize * fElementSize, bytesOf(size), fData);
      fPhysicalSize = size;
    }
    widenIncrement(grown);
  }
  fLength = length;
  return 0;
}

unsigned int Tarray::grownSize(unsigned int length) const
{
  const unsigned int step = std::max(fSizeIncrement, 1U);
  const unsigned int missing = length - fPhysicalSize;
  const TuInt64 size = fPhysicalSize + TuInt64(missing <= step ? 1 : (missing - 1) / step + 1) * step;
  if (size > UINT_MAX)
    throw TmemoryException();
  return unsigned(size);
}

void Tarray::widenIncrement(unsigned int length) noexcept
{
  const unsigned int step = std::max(fSizeIncrement, 1U);
  fSizeIncrement = step < INT_MAX && TuInt64(step) * 4 < length ? 1 + step + step / 4 : step;
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

long Tarray::setArray(void* data, unsigned int length, unsigned int physicalSize)
{
  const unsigned int bytes = bytesOf(physicalSize);
  if (data && data == fData)
  {
    changePhysicalSizeTo(std::min(physicalSize, fPhysicalSize));
    return changeLogicalSizeTo(std::min(length, fPhysicalSize));
  }
  changePhysicalSizeTo(0);
  if (data && physicalSize != 0)
    replaceBuffer(static_cast<char*>(data), std::min(length, physicalSize), physicalSize);
  else if (data)
    sReleaseBuffer(data, bytes);
  return 0;
}

void* Tarray::sAllocateBuffer(unsigned int bytes)
{
  void* buffer = nullptr;
  do
    buffer = bytes < kMappedBytes ? std::malloc(std::max(bytes, 1U)) : takeUncleared(bytes, kTag);
  while (!buffer && Platform::giveBackKept());
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
  void* moved = nullptr;
  if (wasMapped && isMapped)
    moved = resizeUncleared(buffer, newBytes, kTag);
  else if (!wasMapped && !isMapped && newBytes > kCopiedBytes)
    moved = std::realloc(buffer, newBytes);
  if (!moved)
  {
    moved = sAllocateBuffer(newBytes);
    // Not memcpy(), which the compiler would replace by an instruction that is slow to start.
    std::memmove(moved, buffer, std::min(oldBytes, newBytes));
    sReleaseBuffer(buffer, oldBytes);
  }
  return static_cast<char*>(moved);
}

// Small arrays take many steps. Malloc knows of the room for more of them, the array does not.
char* Tarray::growBuffer(unsigned int oldBytes, unsigned int newBytes, char* buffer)
{
  if (newBytes >= kMappedBytes)
    return reallocate(oldBytes, newBytes, buffer);
  if (Platform::usableSize(buffer) >= newBytes)
    return buffer;
  return reallocate(oldBytes, kSpares ? std::min(newBytes + newBytes / 2, kMappedBytes - 1) : newBytes, buffer);
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

std::size_t Tarray::offsetOf(const void* source) const noexcept
{
  const char* bytes = static_cast<const char*>(source);
  const bool inside = fData && !std::less<>()(bytes, fData) && std::less<>()(bytes, address(fLength));
  return inside ? std::size_t(bytes - fData) : kOutside;
}

long Tarray::insertElement(const void* source, unsigned int index, unsigned int count)
{
  const unsigned int length = lengthPlus(count);
  const std::size_t offset = offsetOf(source);
  const unsigned int tail = index < fLength ? fLength - index : 0;
  if (length > fPhysicalSize)
    expandArray(length);
  else
    fLength = length;
  char* const at = address(length - count - tail);
  const std::size_t bytes = std::size_t(count) * fElementSize;
  copyBytes(at + bytes, at, std::size_t(tail) * fElementSize);
  if (offset == kOutside)
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
    const std::size_t offset = offsetOf(source);
    changePhysicalSizeTo(length);
    fLength = length;
    source = offset == kOutside ? source : fData + offset;
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
  case 1: at = findWord<TuInt8>(fData, fLength, bytes); break;
  case 2: at = findWord<TuInt16>(fData, fLength, bytes); break;
  case 4: at = findWord<TuInt32>(fData, fLength, bytes); break;
  case 8: at = findWord<TuInt64>(fData, fLength, bytes); break;
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
