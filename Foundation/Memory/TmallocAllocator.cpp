#include "Foundation/Memory/TmallocAllocator.h"

#include "Foundation/Debug/TerrorHandler.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/BlockStatistics.h"
#include "Foundation/Memory/UnclearedBlocks.h"
#include "Foundation/Platform/Descriptor.h"
#include "Foundation/Platform/Memory.h"
#include "Foundation/String/Tstring.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <ostream>
#include <utility>

namespace {

constexpr unsigned int kLargeSize = 31744;
constexpr unsigned int kPageSize = 16;
constexpr TuInt64 kLowMemoryThreshold = 10485760;
constexpr TuInt64 kEstimateLife = 5; // seconds
constexpr const char* kRule = "====================================\n";

// The state of the process. Totals have 64 bits since large blocks together may well pass 32.
bool gOpened = false;
bool gUseMalloc = false;
bool gReporting = false; // low memory, at this moment
unsigned int gPageSize = 0;
unsigned int gMask = 0;
Tint32 gFreeMemory = 0;
TuInt64 gMeasured = 0;     // when gFreeMemory was, in seconds
TuInt64 gCurrentBytes = 0; // of large blocks
TuInt64 gPeakBytes = 0;
TuInt64 gHeapAtPeak = 0;
TuInt64 gMaximumSwap = 0;
TuInt64 gLogicalSwap = 0;
TuInt64 gReportedFaults = 0;
TuInt64 gReportedResident = 0;
Tmmap* gBlocks = nullptr;
Tmmap* gZeroedMemory = nullptr;
Tmmap* gDiskFile = nullptr;

void ensureOpen()
{
  if (!gOpened)
    TmallocAllocator::open(nullptr);
}

[[noreturn]] void throwMemoryException()
{
  throw TmemoryException();
}

// The handler of operator new, which asks again when this returns.
void makeFree()
{
  if (!Platform::giveBackKept())
    throwMemoryException();
}

std::new_handler gFormerHandler = nullptr;

// From the library's loading to its end. The blocks and their table stay for those who end later.
const struct Tlifetime
{
  Tlifetime() { TmallocAllocator::open(nullptr); }
  ~Tlifetime()
  {
    TmallocAllocator::purge();
    if (std::get_new_handler() == makeFree) // which may go with the library
      std::set_new_handler(gFormerHandler);
  }
} gLifetime;

Tint32 adjust(Tint64 delta)
{
  using Limits = std::numeric_limits<Tint32>;
  gFreeMemory = Tint32(std::clamp<Tint64>(gFreeMemory + delta, Limits::min(), Limits::max()));
  return gFreeMemory;
}

// What is free beyond the threshold, of which the estimate shows as much as it can.
TuInt64 measureFreeMemory()
{
  const Platform::SystemMemory memory = Platform::systemMemory();
  const TuInt64 all = memory.freePhysical + memory.freeSwap;
  const TuInt64 free = all > kLowMemoryThreshold ? all - kLowMemoryThreshold : 0;
  gFreeMemory = Tint32(std::min<TuInt64>(free, std::numeric_limits<Tint32>::max()));
  gMeasured = Platform::tickCount() / 1000;
  return free;
}

template <std::size_t N>
const char* megabytes(char (&text)[N], TuInt64 bytes)
{
  std::snprintf(text, N, "%8.3f Mb\t", double(bytes) / 1000000);
  return text;
}

// Hands the report to \p print, piece by piece.
template <class Print>
void printReport(Print print)
{
  const Platform::ProcessMemory memory = Platform::processMemory();
  char text[64];
  print(kRule);
  if (memory.pageFaults > gReportedFaults)
  {
    std::snprintf(text, sizeof text, "%8" PRIu64 "\tPage faults\n", std::uint64_t(memory.pageFaults - gReportedFaults));
    print(text);
  }
  if (memory.maxResident != gReportedResident)
  {
    print(megabytes(text, memory.maxResident));
    print("Max resident size\n");
  }
  print(megabytes(text, gHeapAtPeak));
  print("Peak total size(Estimated)\n");
  print(megabytes(text, gPeakBytes));
  print("Peak arena size\n");
  print(kRule);
  gReportedFaults = memory.pageFaults;
  gReportedResident = memory.maxResident;
  gPeakBytes = gCurrentBytes;
  forEachStatistic([&print](const char* amount, const char* name) {
    print(amount);
    print(name);
    print("\n");
  });
  print(kRule);
  Platform::compactHeaps();
}

// Tells of a request that there is no memory for; standard error through the C library's stream, which needs no memory.
void reportLowMemory(TuInt64 request)
{
  try
  {
    if (TerrorHandler* handler = TerrorHandler::sInstalled())
      handler->reportError(Tstring("Free memory is low. Memory exception thrown"));
  }
  catch (const TmemoryException&) // a handler that asked for more; the report is still due
  {
  }
  const auto print = [](const char* text) { std::fputs(text, stderr); };
  const Platform::SystemMemory memory = Platform::systemMemory();
  const struct
  {
    TuInt64 bytes;
    const char* name;
  } lines[] = {
    {memory.freePhysical, "Free Memory\n"},
    {memory.freeSwap, "Free Swap\n"},
    {request, "Size of alloc\n"},
    {kLowMemoryThreshold, "Low Memory Threshold\n"},
  };
  for (const char* heading : {kRule, "Cause of memory exception\n", kRule})
    print(heading);
  for (const auto& line : lines)
  {
    char text[64];
    print(megabytes(text, line.bytes));
    print(line.name);
  }
  for (const char* heading : {kRule, "Memory use when exception was thrown\n", kRule})
    print(heading);
  printReport(print);
}

// Returns only when exceptions are switched off. A report that needs memory itself does not begin another.
void handleLowMemory(TuInt64 request)
{
  if (std::getenv("VEXA_NO_MEMORY_EXCEPTION"))
    return;
  if (!gReporting)
  {
    struct Reporting
    {
      Reporting() { gReporting = true; }
      ~Reporting() { gReporting = false; }
    } const reporting;
    reportLowMemory(request);
  }
  throwMemoryException();
}

void ensureFreeMemory(unsigned int size)
{
  if (TmallocAllocator::setFreeMemory(0) > Tint64(size))
    return;
  Platform::compactHeaps();
  if (measureFreeMemory() <= size)
    handleLowMemory(size);
}

void countLarge(Tint64 change)
{
  gCurrentBytes += TuInt64(change);
  if (gCurrentBytes > gPeakBytes)
  {
    gPeakBytes = gCurrentBytes;
    gHeapAtPeak = Platform::processMemory().heapSize;
  }
  adjust(-change);
}

void* takeSmall(unsigned int size)
{
  for (;;)
  {
    void* block = std::malloc(size);
    if (block || size == 0)
      return block;
    makeFree();
  }
}

// Aligns the size of a large block; false when it does not fit and exceptions are switched off.
bool alignLarge(unsigned int& size)
{
  const unsigned int aligned = TmallocAllocator::pageAlign(size);
  if (aligned < size)
  {
    handleLowMemory(size);
    return false;
  }
  size = aligned;
  return true;
}

// A large block of a size that becomes aligned; null when exceptions are switched off.
void* takeLarge(unsigned int& size, bool clear)
{
  if (!alignLarge(size))
    return nullptr;
  ensureFreeMemory(size);
  void* block = Platform::takeBlock(size, clear);
  if (block)
    countLarge(size);
  else
  {
    std::perror("GlobalAlloc");
    handleLowMemory(size);
  }
  return block;
}

// The same size again, or another one between large sizes.
void* resizeLarge(void* block, unsigned int oldSize, unsigned int& size, bool clear)
{
  if (!alignLarge(size))
    return nullptr;
  if (size > oldSize)
    ensureFreeMemory(size - oldSize);
  void* moved = Platform::resizeBlock(block, oldSize, size, clear);
  if (moved)
    countLarge(Tint64(size) - oldSize);
  else
  {
    std::perror("GlobalAlloc");
    handleLowMemory(size);
  }
  return moved;
}

void releaseLarge(void* block, unsigned int size)
{
  Platform::releaseBlock(block, size);
  countLarge(-Tint64(size));
}

const char* orEmpty(const char* tag)
{
  return tag ? tag : "";
}

void* take(unsigned int size, const char* tag, bool clear)
{
  ensureOpen();
  if (gUseMalloc)
    return takeSmall(size);
  if (size == 0)
    return nullptr;
  const bool large = size >= kLargeSize;
  void* block = large ? takeLarge(size, clear) : takeSmall(size);
  if (!block)
    return nullptr;
  if (void* memory = std::malloc(sizeof(TmmapEntry)))
  {
    TmmapEntry* entry = new (memory) TmmapEntry;
    entry->fSize = size;
    entry->fTag = orEmpty(tag);
    entry->fMap = large ? gZeroedMemory : nullptr;
    gBlocks->insert(entry, block);
  }
  else
    std::fprintf(stderr, "Invalid entry in mmapAlloc %" PRIxPTR "\n", reinterpret_cast<std::uintptr_t>(block));
  return block;
}

void* resize(void* block, unsigned int size, const char* tag, bool clear)
{
  ensureOpen();
  if (!block)
    return take(size, tag, clear);
  if (size == 0)
  {
    mmapFree(block);
    return nullptr;
  }
  TmmapEntry* entry = gUseMalloc ? nullptr : const_cast<TmmapEntry*>(gBlocks->find(block));
  if (!gUseMalloc && !entry)
    return nullptr;

  // Nothing is released or recorded before the new block is there.
  const unsigned int oldSize = entry ? entry->fSize : 0;
  const bool wasLarge = entry && entry->fMap;
  const bool large = !gUseMalloc && size >= kLargeSize;
  void* moved = nullptr;
  if (!wasLarge && !large)
  {
    while (!(moved = std::realloc(block, size)))
      makeFree();
  }
  else if (wasLarge && large)
    moved = resizeLarge(block, oldSize, size, clear);
  else
    moved = large ? takeLarge(size, clear) : takeSmall(size);
  if (!moved || gUseMalloc)
    return moved;
  if (wasLarge != large)
  {
    std::memcpy(moved, block, std::min(oldSize, size));
    if (wasLarge)
      releaseLarge(block, oldSize);
    else
      std::free(block);
  }
  if (moved != block)
  {
    gBlocks->remove(block); // NOLINT(clang-analyzer-unix.Malloc): a key, no more
    gBlocks->insert(entry, moved);
  }
  entry->fSize = size;
  entry->fTag = orEmpty(tag);
  entry->fMap = large ? gZeroedMemory : nullptr;
  return moved;
}

} // namespace

bool Tmmap::openFile(const char* name) noexcept
{
  const std::size_t size = std::strlen(name) + 1;
  char* copy = static_cast<char*>(std::malloc(size));
  const int descriptor = copy ? Platform::openFile(name, Platform::kOpenRead | Platform::kOpenWrite |
                                                           Platform::kOpenCreate | Platform::kOpenExclusive)
                              : -1;
  if (descriptor < 0)
  {
    std::free(copy);
    return false;
  }
  std::memcpy(copy, name, size);
  closeFile();
  fDescriptor = descriptor;
  fFileName = copy;
  return true;
}

void Tmmap::closeFile() noexcept
{
  if (fDescriptor < 0)
    return;
  Platform::closeFile(fDescriptor);
  Platform::removeFile(fFileName);
  std::free(fFileName);
  fDescriptor = -1;
  fFileName = nullptr;
}

TmallocAllocator& TmallocAllocator::process()
{
  alignas(TmallocAllocator) static unsigned char storage[sizeof(TmallocAllocator)];
  static TmallocAllocator* const allocator = new (storage) TmallocAllocator;
  return *allocator;
}

void* TmallocAllocator::allocate(unsigned int size, const char* tag)
{
  return alloc(size, tag ? tag : "Render Arena");
}

void TmallocAllocator::free(void* block, unsigned int)
{
  mmapFree(block);
}

void* TmallocAllocator::realloc(void* block, unsigned int size, const char* tag)
{
  return mmapRealloc(block, size, tag);
}

void* TmallocAllocator::alloc(unsigned int size, const char* tag)
{
  return take(size, tag, true);
}

Tmmap* TmallocAllocator::open(const char* diskFile)
{
  if (!gOpened)
  {
    if (std::get_new_handler() != makeFree) // it is there already when memory ran out last time
      gFormerHandler = std::set_new_handler(makeFree);
    gUseMalloc = std::getenv("VEXA_USE_MALLOC");
    const Platform::SystemMemory memory = Platform::systemMemory();
    gMaximumSwap = memory.maximumSwap;
    gLogicalSwap = memory.logicalSwap;
    gHeapAtPeak = Platform::processMemory().heapSize;
    measureFreeMemory();
    for (Tmmap** map : {&gBlocks, &gZeroedMemory, &gDiskFile})
    {
      if (!gUseMalloc && !*map) // and so may these be
        *map = new Tmmap;
    }
    gPageSize = gUseMalloc ? 0 : kPageSize;
    gMask = gUseMalloc ? 0 : kPageSize - 1;
    gOpened = true;
  }
  if (diskFile && gDiskFile)
    gDiskFile->openFile(diskFile);
  return gBlocks;
}

void TmallocAllocator::purge()
{
  if (gDiskFile)
    gDiskFile->closeFile();
}

unsigned char TmallocAllocator::useMalloc()
{
  ensureOpen();
  return gUseMalloc;
}

unsigned int TmallocAllocator::pageSize()
{
  ensureOpen();
  return gPageSize;
}

unsigned int TmallocAllocator::mask()
{
  ensureOpen();
  return gMask;
}

unsigned int TmallocAllocator::pageAlign(unsigned int size)
{
  ensureOpen();
  return size & gMask ? (size & ~gMask) + gPageSize : size;
}

Tint32 TmallocAllocator::freeMemory()
{
  ensureOpen();
  return gFreeMemory;
}

Tint32 TmallocAllocator::setFreeMemory(unsigned char force)
{
  ensureOpen();
  // Being asked does not make an estimate younger: only measuring sets its time.
  if (force || Platform::tickCount() / 1000 - gMeasured >= kEstimateLife)
    measureFreeMemory();
  return gFreeMemory;
}

unsigned char TmallocAllocator::checkFreeMemory(Tint32 bytes)
{
  return bytes < setFreeMemory(0);
}

Tint32 TmallocAllocator::adjustFreeMemory(Tint32 delta)
{
  ensureOpen();
  return adjust(delta);
}

void TmallocAllocator::printStatistics(std::ostream& out)
{
  ensureOpen();
  printReport([&out](const char* text) { out << text; });
}

void TmallocAllocator::printFootPrint(std::ostream& out, const char* title)
{
  ensureOpen();
  const Platform::ProcessMemory memory = Platform::processMemory();
  const struct
  {
    TuInt64 bytes;
    const char* name;
  } lines[] = {
    {memory.heapSize, "Heap size\n"}, {gCurrentBytes, "Large blocks\n"}, {memory.maxResident, "Max resident size\n"},
    {gMaximumSwap, "Maximum swap\n"}, {gLogicalSwap, "Logical swap\n"},
  };
  if (title)
    out << title << '\n';
  for (const auto& line : lines)
  {
    char text[64];
    out << megabytes(text, line.bytes) << line.name;
  }
}

Tmmap* TmallocAllocator::mapZeroedMemory()
{
  ensureOpen();
  return gZeroedMemory;
}

Tmmap* TmallocAllocator::mapDiskFile()
{
  ensureOpen();
  return gDiskFile;
}

// There is no memory for a list of tags when this is needed most: each pass over the blocks finds the tag that follows
// the last one.
void forEachStatistic(const std::function<void(const char* amount, const char* name)>& take)
{
  char text[64];
  take(megabytes(text, Platform::processMemory().heapSize), "Current");
  for (const char* last = nullptr; gBlocks;)
  {
    const char* next = nullptr;
    TuInt64 bytes = 0;
    for (const TmmapEntry& entry : std::as_const(*gBlocks))
    {
      if (last && std::strcmp(entry.fTag, last) <= 0)
        continue;
      const int order = next ? std::strcmp(entry.fTag, next) : -1;
      if (order < 0)
      {
        next = entry.fTag;
        bytes = 0;
      }
      if (order <= 0)
        bytes += entry.fSize;
    }
    if (!next)
      break;
    take(megabytes(text, bytes), next);
    last = next;
  }
}

void* mmapAlloc(unsigned int size, const char* tag)
{
  return TmallocAllocator::alloc(size, tag);
}

void* mmapRealloc(void* block, unsigned int size, const char* tag)
{
  return resize(block, size, tag, true);
}

void* takeUncleared(unsigned int size, const char* tag)
{
  return take(size, tag, false);
}

void* resizeUncleared(void* block, unsigned int size, const char* tag)
{
  return resize(block, size, tag, false);
}

unsigned int mmapFree(void* block)
{
  ensureOpen();
  if (gUseMalloc)
  {
    std::free(block);
    return 0;
  }
  TmmapEntry* entry = static_cast<TmmapEntry*>(gBlocks->remove(block));
  if (!entry)
    return 0;
  const unsigned int size = entry->fSize;
  if (entry->fMap)
    releaseLarge(block, size);
  else
    std::free(block);
  std::free(entry);
  return size;
}
