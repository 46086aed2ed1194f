#pragma once

#include "Foundation/Memory/Tallocator.h"

class FOUNDATION_API TmallocAllocator : public Tallocator
{
public:
  static Tallocator& process();

  void* allocate(unsigned int size, const char* tag) override;
  void free(void* block, unsigned int size) override;
};
