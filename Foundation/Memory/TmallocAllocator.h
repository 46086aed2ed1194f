#pragma once

#include "Foundation/Memory/Tallocator.h"

class FOUNDATION_API TmallocAllocator : public Tallocator
{
public:
  static Tallocator& process();

  void* allocate(unsigned int size, const char* tag) override;
  void free(void* block, unsigned int size) override;
};
FOUNDATION_API void* mmapAlloc(unsigned int size, const char* tag);

/// Moves \p block to one of \p size bytes, keeping its contents. Null when there is no memory; the block then stays.
FOUNDATION_API void* mmapRealloc(void* block, unsigned int size, const char* tag);

/// Gives \p block back and returns how many bytes it had.
FOUNDATION_API unsigned int mmapFree(void* block);
