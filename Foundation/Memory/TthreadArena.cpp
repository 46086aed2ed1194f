#include "Foundation/Memory/TthreadArena.h"

#include "Foundation/Memory/Tallocator.h"

#include <cstdlib>
#include <new>

namespace {

// The process allocator keeps books, which several threads must not do at once.
class TthreadPages : public Tallocator
{
public:
  void* allocate(unsigned int size, const char*) override { return std::malloc(size); }
  void free(void* block, unsigned int) override { std::free(block); }
};

TthreadArena* gArenas[TthreadArena::kMaxThreads];

Tallocator& threadPages()
{
  alignas(TthreadPages) static unsigned char room[sizeof(TthreadPages)];
  static TthreadPages& pages = *new (room) TthreadPages; // never destroyed: an arena may be closed at any time
  return pages;
}

} // namespace

TthreadArena::TthreadArena(long thread, const char* name)
  : TvariantArena(4096, kNoLimit, threadPages(), name)
  , fThread(thread)
{
}

TthreadArena* TthreadArena::open(long thread, const char* name)
{
  if (thread < 0 || thread >= kMaxThreads)
    return nullptr;
  if (!gArenas[thread])
    gArenas[thread] = new (std::nothrow) TthreadArena(thread, name);
  return gArenas[thread];
}

unsigned char TthreadArena::close(long thread)
{
  if (thread < 0 || thread >= kMaxThreads || !gArenas[thread])
    return 0;
  delete gArenas[thread];
  gArenas[thread] = nullptr;
  return 1;
}
