#include "Foundation/Platform/Memory.h"

#include "Foundation/Platform/Sanitizer.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace Platform {

namespace {

// Without a stream, whose buffer would need memory.
bool readText(const char* path, char* text, std::size_t size)
{
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    return false;
  const ssize_t count = read(descriptor, text, size - 1);
  close(descriptor);
  text[count > 0 ? count : 0] = '\0';
  return count > 0;
}

// The figure in kilobytes behind a name, as bytes.
bool findBytes(const char* text, const char* name, TuInt64& bytes)
{
  const char* place = std::strstr(text, name);
  if (place)
    bytes = TuInt64(std::strtoull(place + std::strlen(name), nullptr, 10)) * 1024;
  return place;
}

std::size_t wholePages(std::size_t size)
{
  static const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
  return (size + page - 1) & ~(page - 1);
}

// Pages of released blocks are kept for the next ones, since new ones cost ten times what it takes to clear them. A
// block that was cut from the front of a run grows into the rest of it. All sizes are whole pages.
struct Run
{
  char* begin;
  std::size_t size;

  char* end() const { return begin + size; }
};

#ifdef FOUNDATION_ASAN
constexpr std::size_t kMostKept = 0; // so that released blocks are not touched unnoticed
#else
constexpr std::size_t kMostKept = 16 << 20;
#endif
constexpr int kMostRuns = 16;
Run gRuns[kMostRuns]; // the one kept longest first
int gRunCount = 0;
std::size_t gKept = 0; // bytes
std::atomic_flag gRunsTaken = ATOMIC_FLAG_INIT;

// Of several threads one has the runs. The others do without.
class RunsClaim
{
public:
  RunsClaim() = default;
  RunsClaim(const RunsClaim&) = delete;
  RunsClaim& operator=(const RunsClaim&) = delete;
  ~RunsClaim()
  {
    if (fMine)
      gRunsTaken.clear(std::memory_order_release);
  }
  explicit operator bool() const { return fMine; }

private:
  const bool fMine = !gRunsTaken.test_and_set(std::memory_order_acquire);
};

void forgetRun(Run* run)
{
  gKept -= run->size;
  std::copy(run + 1, gRuns + gRunCount--, run);
}

// The first pages of a run, which \p suits says may do; of several the smallest. Null when there is none.
template <class Suits>
char* takeKept(std::size_t size, Suits suits)
{
  const RunsClaim claim;
  Run* best = nullptr;
  for (Run* run = gRuns; claim && run != gRuns + gRunCount; ++run)
  {
    if (run->size >= size && suits(*run) && (!best || run->size < best->size))
      best = run;
  }
  if (!best)
    return nullptr;
  char* const pages = best->begin;
  best->begin += size;
  best->size -= size;
  gKept -= size;
  if (best->size == 0)
    forgetRun(best);
  return pages;
}

char* takeKept(std::size_t size)
{
  return takeKept(size, [](const Run&) { return true; });
}

bool takeKeptAt(const char* place, std::size_t size)
{
  return takeKept(size, [place](const Run& run) { return run.begin == place; });
}

// Keeps pages, if need be in the place of others or only the first of them, and gives the rest back.
void keep(Run pages)
{
  const RunsClaim claim;
  for (int i = gRunCount; claim && i-- > 0;)
  {
    const Run run = gRuns[i];
    if (run.end() != pages.begin && pages.end() != run.begin)
      continue;
    pages = {std::min(run.begin, pages.begin), run.size + pages.size};
    forgetRun(gRuns + i);
  }
  const std::size_t kept = claim ? std::min(pages.size, kMostKept) : 0;
  if (kept < pages.size)
    munmap(pages.begin + kept, pages.size - kept);
  if (kept == 0)
    return;
  while (gRunCount == kMostRuns || gKept + kept > kMostKept)
  {
    munmap(gRuns->begin, gRuns->size);
    forgetRun(gRuns);
  }
  gRuns[gRunCount++] = {pages.begin, kept};
  gKept += kept;
}

// Pages of zeros that nobody had yet.
char* mapPages(std::size_t size)
{
  void* pages = MAP_FAILED;
  do
    pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  while (pages == MAP_FAILED && giveBackKept());
  return pages == MAP_FAILED ? nullptr : static_cast<char*>(pages);
}

} // namespace

bool giveBackKept()
{
  const RunsClaim claim;
  const bool any = claim && gRunCount != 0;
  while (claim && gRunCount != 0)
  {
    munmap(gRuns->begin, gRuns->size);
    forgetRun(gRuns);
  }
  return any;
}

void* takeBlock(std::size_t size, bool clear)
{
  char* const pages = takeKept(wholePages(size));
  if (pages && clear)
    std::memset(pages, 0, size);
  return pages ? pages : mapPages(wholePages(size));
}

void* resizeBlock(void* block, std::size_t oldSize, std::size_t newSize, bool clear)
{
  char* begin = static_cast<char*>(block);
  const std::size_t size = wholePages(oldSize), wanted = wholePages(newSize);
  if (wanted < size)
    keep({begin + wanted, size - wanted});
  char* moved = wanted <= size || takeKeptAt(begin + size, wanted - size) ? begin : takeKept(wanted);
  std::size_t unclear = newSize; // the bytes behind are zeros
  if (!moved)
  {
    void* mapped = MAP_FAILED;
    do
      mapped = mremap(block, size, wanted, MREMAP_MAYMOVE);
    while (mapped == MAP_FAILED && giveBackKept());
    if (mapped != MAP_FAILED)
      moved = begin = static_cast<char*>(mapped);
    else // perhaps since the block grew into the pages of another, which cannot be remapped together
      moved = mapPages(wanted);
    unclear = std::min(size, newSize);
  }
  if (!moved)
    return nullptr;
  if (moved != begin)
  {
    std::memcpy(moved, begin, std::min(oldSize, newSize));
    keep({begin, size});
  }
  if (clear && unclear > oldSize)
    std::memset(moved + oldSize, 0, unclear - oldSize);
  return moved;
}

void releaseBlock(void* block, std::size_t size)
{
  keep({static_cast<char*>(block), wholePages(size)});
}

std::size_t usableSize(void* block)
{
  return malloc_usable_size(block);
}

void compactHeaps()
{
  giveBackKept();
  malloc_trim(0);
}

SystemMemory systemMemory()
{
  SystemMemory memory = {};
  char text[4096];
  if (readText("/proc/meminfo", text, sizeof text) && findBytes(text, "MemAvailable:", memory.freePhysical) &&
      findBytes(text, "SwapFree:", memory.freeSwap) && findBytes(text, "SwapTotal:", memory.maximumSwap) &&
      findBytes(text, "CommitLimit:", memory.logicalSwap))
    return memory;
  // A system that does not show its processes. What files occupy, and would give up, then counts as used.
  struct sysinfo info = {};
  sysinfo(&info);
  memory.freePhysical = TuInt64(info.freeram) * info.mem_unit;
  memory.freeSwap = TuInt64(info.freeswap) * info.mem_unit;
  memory.maximumSwap = TuInt64(info.totalswap) * info.mem_unit;
  memory.logicalSwap = TuInt64(info.totalram) * info.mem_unit + memory.maximumSwap;
  return memory;
}

ProcessMemory processMemory()
{
  ProcessMemory memory = {};
  char text[256];
  unsigned long long data = 0; // pages
  if (readText("/proc/self/statm", text, sizeof text) && std::sscanf(text, "%*s %*s %*s %*s %*s %llu", &data) == 1)
    memory.heapSize = TuInt64(data) * TuInt64(sysconf(_SC_PAGESIZE));
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  memory.maxResident = TuInt64(usage.ru_maxrss) * 1024;
  memory.pageFaults = TuInt64(usage.ru_minflt) + TuInt64(usage.ru_majflt);
  return memory;
}

TuInt64 tickCount()
{
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return TuInt64(now.tv_sec) * 1000 + TuInt64(now.tv_nsec) / 1000000;
}

TuInt64 systemTime()
{
  return TuInt64(std::time(nullptr));
}

} // namespace Platform
