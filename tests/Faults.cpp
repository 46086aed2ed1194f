#include "tests/Faults.h"

#ifdef CAN_REFUSE_MEMORY

#  include <cerrno>
#  include <cstdarg>
#  include <cstdlib>
#  include <cstring>
#  include <ctime>
#  include <fcntl.h>
#  include <sys/mman.h>
#  include <sys/syscall.h>
#  include <unistd.h>

bool (*gRefusesMemory)() = nullptr;
const char* gMemoryInformation = nullptr;
int gSecondsAhead = 0;

namespace {

int gBefore = 0, gStruck = 0;
bool gOnwards = false;

bool refused()
{
  if (!gRefusesMemory || !gRefusesMemory())
    return false;
  errno = ENOMEM;
  return true;
}

} // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept
{
  return refused() ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept
{
  return refused() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) noexcept
{
  return refused() ? nullptr : __libc_realloc(block, size);
}

void* mmap(void* address, size_t size, int protection, int flags, int descriptor, off_t offset) noexcept
{
  if (refused())
    return MAP_FAILED;
#  ifdef SYS_mmap2
  return reinterpret_cast<void*>(syscall(SYS_mmap2, address, size, protection, flags, descriptor, offset >> 12));
#  else
  return reinterpret_cast<void*>(syscall(SYS_mmap, address, size, protection, flags, descriptor, offset));
#  endif
}

void* mremap(void* address, size_t oldSize, size_t newSize, int flags, ...) noexcept
{
  return refused() ? MAP_FAILED : reinterpret_cast<void*>(syscall(SYS_mremap, address, oldSize, newSize, flags));
}

int clock_gettime(clockid_t clock, timespec* time) noexcept
{
  const long result = syscall(SYS_clock_gettime, clock, time);
  time->tv_sec += clock == CLOCK_MONOTONIC ? gSecondsAhead : 0;
  return int(result);
}

int open(const char* path, int flags, ...)
{
  va_list arguments;
  va_start(arguments, flags);
  const int mode = flags & O_CREAT ? va_arg(arguments, int) : 0;
  va_end(arguments);
  if (gMemoryInformation && std::strcmp(path, "/proc/meminfo") == 0)
    path = gMemoryInformation;
  return int(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
}
}

Shortage::Shortage(int first, bool onwards)
{
  gBefore = first;
  gStruck = 0;
  gOnwards = onwards;
  gRefusesMemory = [] {
    if (gBefore-- > 0 || (gStruck > 0 && !gOnwards))
      return false;
    gBefore = 0;
    ++gStruck;
    return true;
  };
}

Shortage::~Shortage()
{
  gRefusesMemory = nullptr;
}

int Shortage::struck()
{
  return gStruck;
}

#endif
