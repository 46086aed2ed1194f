#include "Foundation/Platform/Memory.h"

#include <algorithm>
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

} // namespace

void* takeBlock(std::size_t size)
{
  void* block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return block == MAP_FAILED ? nullptr : block;
}

void* resizeBlock(void* block, std::size_t oldSize, std::size_t newSize)
{
  void* moved = mremap(block, oldSize, newSize, MREMAP_MAYMOVE);
  if (moved == MAP_FAILED)
    return nullptr;
  if (newSize > oldSize) // the rest of the last page may have been in use
  {
    const std::size_t rest = -oldSize & (std::size_t(sysconf(_SC_PAGESIZE)) - 1);
    std::memset(static_cast<char*>(moved) + oldSize, 0, std::min(rest, newSize - oldSize));
  }
  return moved;
}

void releaseBlock(void* block, std::size_t size)
{
  munmap(block, size);
}

void compactHeaps()
{
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
