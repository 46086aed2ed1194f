#include "Foundation/Memory/CompactArenas.h"

#include "Foundation/Memory/TcompactArena.h"

namespace {

// One text for all four: its address makes them a family.
constexpr char kName[] = "NURBS AG";
constexpr unsigned kPageBytes = 0x40000;

constinit TcompactArena gArena8(8, kPageBytes, kName);
constinit TcompactArena gArena16(16, kPageBytes, kName);
constinit TcompactArena gArena24(24, kPageBytes, kName);
constinit TcompactArena gArena32(32, kPageBytes, kName);

} // namespace

void* compactAllocate8()
{
  return gArena8.allocate();
}

void* compactAllocate16()
{
  return gArena16.allocate();
}

void* compactAllocate24()
{
  return gArena24.allocate();
}

void* compactAllocate32()
{
  return gArena32.allocate();
}

unsigned char compactDeallocate8(void* block)
{
  return gArena8.deallocate(block);
}

unsigned char compactDeallocate16(void* block)
{
  return gArena16.deallocate(block);
}

unsigned char compactDeallocate24(void* block)
{
  return gArena24.deallocate(block);
}

unsigned char compactDeallocate32(void* block)
{
  return gArena32.deallocate(block);
}

unsigned char compactPreAllocate8(unsigned int blocks)
{
  return gArena8.preAllocate(blocks);
}

unsigned char compactPreAllocate16(unsigned int blocks)
{
  return gArena16.preAllocate(blocks);
}

unsigned char compactPreAllocate24(unsigned int blocks)
{
  return gArena24.preAllocate(blocks);
}

unsigned char compactPreAllocate32(unsigned int blocks)
{
  return gArena32.preAllocate(blocks);
}
