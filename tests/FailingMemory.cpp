#include "tests/FailingMemory.h"

#if FAILING_MEMORY

#  include <cerrno>
#  include <cstdarg>
#  include <cstddef>
#  include <cstring>
#  include <ctime>
#  include <fcntl.h>
#  include <sys/mman.h>
#  include <sys/syscall.h>
#  include <unistd.h>

const char* gMemoryInformation = nullptr;
int gSecondsAhead = 0;

namespace {

int gAfter, gTimes, gFailed;

bool fails()
{
  if (gTimes == 0 || gAfter-- > 0)
    return false;
  gAfter = 0;
  --gTimes;
  ++gFailed;
  errno = ENOMEM;
  return true;
}

} // namespace

void failAllocations(int after, int times)
{
  gAfter = after;
  gTimes = times;
  gFailed = 0;
}

int failedAllocations()
{
  return gFailed;
}

// The library and the C++ runtime find these before the system's.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept
{
  return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
  return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept
{
  return fails() ? nullptr : __libc_realloc(block, size);
}

void* mmap(void* address, std::size_t size, int protection, int flags, int descriptor, off_t offset) noexcept
{
#  ifdef SYS_mmap2
  const long call = SYS_mmap2;
  offset >>= 12;
#  else
  const long call = SYS_mmap;
#  endif
  return fails() ? MAP_FAILED
                 : reinterpret_cast<void*>(syscall(call, address, size, protection, flags, descriptor, offset));
}

void* mremap(void* address, std::size_t oldSize, std::size_t newSize, int flags, ...) noexcept
{
  return fails() ? MAP_FAILED : reinterpret_cast<void*>(syscall(SYS_mremap, address, oldSize, newSize, flags));
}

int open(const char* path, int flags, ...)
{
  va_list arguments;
  va_start(arguments, flags);
  const int mode = flags & O_CREAT ? va_arg(arguments, int) : 0;
  va_end(arguments);
  const bool asked = gMemoryInformation && std::strcmp(path, "/proc/meminfo") == 0;
  return int(syscall(SYS_openat, AT_FDCWD, asked ? gMemoryInformation : path, flags | O_LARGEFILE, mode));
}

int clock_gettime(clockid_t clock, timespec* time) noexcept
{
#  ifdef SYS_clock_gettime64
  const long result = syscall(SYS_clock_gettime64, clock, time);
#  else
  const long result = syscall(SYS_clock_gettime, clock, time);
#  endif
  time->tv_sec += clock == CLOCK_MONOTONIC ? gSecondsAhead : 0;
  return int(result);
}
}

#endif
