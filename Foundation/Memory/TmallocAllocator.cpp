#include "Foundation/Memory/TmallocAllocator.h"

#include <cstdlib>

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
