#include "Foundation/Memory/TmallocAllocator.h"

#include <cstdlib>
#include <new>

Tallocator& TmallocAllocator::process()
{
  alignas(TmallocAllocator) static unsigned char room[sizeof(TmallocAllocator)];
  static TmallocAllocator& instance = *new (room) TmallocAllocator;
  return instance;
}

void* TmallocAllocator::allocate(unsigned int size, const char*)
{
  return std::malloc(size);
}

void TmallocAllocator::free(void* block, unsigned int)
{
  std::free(block);
}
void* mmapAlloc(unsigned int size, const char*)
{
  return std::malloc(size);
}

void* mmapRealloc(void* block, unsigned int size, const char*)
{
  return std::realloc(block, size);
}

unsigned int mmapFree(void* block)
{
  std::free(block);
  return 0;
}
