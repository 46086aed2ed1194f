#include "tests/FailingMemory.h"

#if FAILING_MEMORY

#  include <cerrno>
#  include <cstddef>

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
}

#endif
