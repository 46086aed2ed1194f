#include "Foundation/Platform/Memory.h"

#include <cerrno>
#include <malloc.h>
#include <windows.h>

#include <psapi.h>

namespace Platform {

namespace {

constexpr UINT kMovable = GMEM_MOVEABLE | GMEM_ZEROINIT;
constexpr UINT kFixed = GMEM_FIXED | GMEM_ZEROINIT;

} // namespace

void* takeBlock(std::size_t size, bool)
{
  void* block = nullptr;
  if (const HGLOBAL handle = GlobalAlloc(kMovable, size))
  {
    block = GlobalLock(handle);
    if (!block)
      GlobalFree(handle);
  }
  if (!block)
    block = GlobalAlloc(kFixed, size);
  if (!block)
    errno = ENOMEM;
  return block;
}

void* resizeBlock(void* block, std::size_t, std::size_t newSize, bool)
{
  const HGLOBAL handle = GlobalHandle(block);
  GlobalUnlock(handle);
  const HGLOBAL moved = GlobalReAlloc(handle, newSize, kMovable);
  void* result = GlobalLock(moved ? moved : handle); // a block that could not be resized is where it was
  if (moved && result)
    return result;
  errno = ENOMEM;
  return nullptr;
}

void releaseBlock(void* block, std::size_t)
{
  const HGLOBAL handle = GlobalHandle(block);
  GlobalUnlock(handle);
  GlobalFree(handle);
}

// The system's heaps keep what they think fit.
bool giveBackKept()
{
  return false;
}

std::size_t usableSize(void* block)
{
  return _msize(block);
}

void compactHeaps()
{
  HANDLE heaps[256];
  const DWORD count = GetProcessHeaps(256, heaps);
  for (DWORD i = 0; i < count && i < 256; ++i)
    HeapCompact(heaps[i], 0);
}

SystemMemory systemMemory()
{
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof status;
  GlobalMemoryStatusEx(&status);
  // The figures for the page file contain physical memory.
  const auto beyond = [](TuInt64 both, TuInt64 physical) { return both > physical ? both - physical : 0; };
  return {status.ullAvailPhys, beyond(status.ullAvailPageFile, status.ullAvailPhys),
          beyond(status.ullTotalPageFile, status.ullTotalPhys), status.ullTotalPageFile};
}

ProcessMemory processMemory()
{
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof counters;
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return {counters.PagefileUsage, counters.PeakWorkingSetSize, counters.PageFaultCount};
}

TuInt64 tickCount()
{
  return GetTickCount64();
}

TuInt64 systemTime()
{
  FILETIME now; // in tenths of microseconds since the beginning of 1601
  GetSystemTimeAsFileTime(&now);
  return (TuInt64(now.dwHighDateTime) << 32 | now.dwLowDateTime) / 10000000 - 11644473600;
}

} // namespace Platform
