#include "Foundation/Container/ThashTable.h"

#include "Foundation/Debug/Texception.h"

#include <cstdlib>
#include <cstring>

struct ThashTable::TsizeLock
{
  TuInt32 depth;
  TuInt32 minimum; // to go back to
  TuInt32 maximum;
};

namespace {

constexpr TuInt32 kLeastCount = 8;
constexpr TuInt32 kMostCount = 0x80000000;

TuInt32 lowMark(TuInt32 buckets)
{
  return buckets / 8;
}

TuInt32 highMark(TuInt32 buckets)
{
  return TuInt32(TuInt64(buckets) * 3 / 8);
}

TuInt32 roundUp(TuInt32 count, TuInt32 least)
{
  while (least < count && least < kMostCount)
    least *= 2;
  return least;
}

ThashTableEntry** newBuckets(TuInt32 count)
{
  return static_cast<ThashTableEntry**>(std::calloc(count, sizeof(ThashTableEntry*)));
}

bool isPowerOfTwo(TuInt32 count)
{
  return count != 0 && (count & (count - 1)) == 0;
}

} // namespace

ThashTable::ThashTable(unsigned int minimum, unsigned int maximum)
  : fMinimumCount(roundUp(minimum, kLeastCount))
  , fMaximumCount(roundUp(maximum, fMinimumCount))
  , fBucketCount(fMinimumCount)
  , fBuckets(newBuckets(fBucketCount))
{
  if (!fBuckets)
    throw TmemoryException();
  setMarks();
}

ThashTable::~ThashTable()
{
  std::free(fSizeLock);
  std::free(fBuckets);
}

bool ThashTable::resize() noexcept
{
  if (fSizeLock)
    return false;
  TuInt32 size = fBucketCount;
  if (fEntryCount < fLowWaterMark && size / 2 >= fMinimumCount)
  {
    do
      size /= 2;
    while (fEntryCount < lowMark(size) && size / 2 >= fMinimumCount);
  }
  else
  {
    while (fEntryCount > highMark(size) && size <= fMaximumCount / 2)
      size *= 2;
  }
  return setTableSize(size);
}

bool ThashTable::lockSize() noexcept
{
  if (!fSizeLock)
  {
    fSizeLock = static_cast<TsizeLock*>(std::malloc(sizeof(TsizeLock)));
    if (!fSizeLock)
      return false;
    *fSizeLock = {0, fMinimumCount, fMaximumCount};
    fMinimumCount = fMaximumCount = fBucketCount;
  }
  ++fSizeLock->depth;
  return true;
}

bool ThashTable::unlockSize() noexcept
{
  if (!fSizeLock)
    return false;
  if (--fSizeLock->depth > 0)
    return true;
  fMinimumCount = fSizeLock->minimum;
  fMaximumCount = fSizeLock->maximum;
  std::free(fSizeLock);
  fSizeLock = nullptr;
  return resize();
}

bool ThashTable::validate() const noexcept
{
  if (!isPowerOfTwo(fBucketCount) || !isPowerOfTwo(fMinimumCount) || !isPowerOfTwo(fMaximumCount) ||
      fMinimumCount < kLeastCount || fMaximumCount < fMinimumCount || fLowWaterMark != lowMark(fBucketCount) ||
      fHighWaterMark != highMark(fBucketCount))
    return false;
  if (fSizeLock && (fSizeLock->depth == 0 || fMinimumCount != fMaximumCount))
    return false;
  TuInt32 count = 0;
  for (TuInt32 bucket = 0; bucket < fBucketCount; ++bucket)
  {
    for (const ThashTableEntry* entry = fBuckets[bucket]; entry; entry = entry->fNext)
    {
      // Too many are in a circle, perhaps.
      if (tableIndex(fBucketCount, entry->fHash) != bucket || ++count > fEntryCount)
        return false;
    }
  }
  return count == fEntryCount;
}

void ThashTable::unlinkEntry(ThashTableEntry* entry) noexcept
{
  ThashTableIterator(*this)._remove(entry, tableIndex(fBucketCount, entry->fHash));
}

bool ThashTable::setTableSize(unsigned int n) noexcept
{
  if (n == fBucketCount)
    return true;
  ThashTableEntry** buckets = newBuckets(n);
  if (!buckets)
    return false;
  for (TuInt32 bucket = 0; bucket < fBucketCount; ++bucket)
  {
    ThashTableEntry* next = nullptr;
    for (ThashTableEntry* entry = fBuckets[bucket]; entry; entry = next)
    {
      next = entry->fNext;
      ThashTableEntry*& head = buckets[tableIndex(n, entry->fHash)];
      entry->fNext = head;
      head = entry;
    }
  }
  std::free(fBuckets);
  fBuckets = buckets;
  fBucketCount = n;
  setMarks();
  return true;
}

bool ThashTable::shrinkTable() noexcept
{
  return fEntryCount >= fLowWaterMark || fBucketCount / 2 < fMinimumCount || setTableSize(fBucketCount / 2);
}

void ThashTable::reinitializeTable() noexcept
{
  fEntryCount = 0;
  if (ThashTableEntry** buckets = newBuckets(fMinimumCount))
  {
    std::free(fBuckets);
    fBuckets = buckets;
    fBucketCount = fMinimumCount;
    setMarks();
  }
  else
    std::memset(fBuckets, 0, fBucketCount * sizeof *fBuckets);
}

void ThashTable::setMarks() noexcept
{
  fLowWaterMark = lowMark(fBucketCount);
  fHighWaterMark = highMark(fBucketCount);
}

ThashTableIterator::ThashTableIterator(ThashTable& table) noexcept
  : fTable(table)
{
}

bool ThashTableIterator::_first() noexcept
{
  fBucket = 0;
  fEntry = fTable.fBuckets[0];
  return fEntry || _next();
}

bool ThashTableIterator::_first(TuInt32 hash) noexcept
{
  fBucket = ThashTable::tableIndex(fTable.fBucketCount, hash);
  fEntry = fTable.fBuckets[fBucket];
  return fEntry;
}

bool ThashTableIterator::_next() noexcept
{
  if (fEntry)
    fEntry = fEntry->fNext;
  while (!fEntry && fBucket + 1 < fTable.fBucketCount)
    fEntry = fTable.fBuckets[++fBucket];
  return fEntry;
}

void ThashTableIterator::_remove(ThashTableEntry* entry, TuInt32 bucket) noexcept
{
  for (ThashTableEntry** link = &fTable.fBuckets[bucket]; *link; link = &(*link)->fNext)
  {
    if (*link == entry)
    {
      *link = entry->fNext;
      --fTable.fEntryCount;
      return;
    }
  }
}
