#include "Foundation/Memory/CompactArenas.h"

#include "Foundation/Memory/TcompactArena.h"

#include <initializer_list>
#include <new>

namespace {

// One text for all four: its address makes them a family.
constexpr char kName[] = "NURBS AG";
constexpr unsigned kPageBytes = 0x40000;

// There before every static initialiser and after every destructor: its own does nothing.
union Tlasting
{
  constexpr explicit Tlasting(unsigned blockSize)
    : arena(blockSize, kPageBytes, kName)
  {
  }
  ~Tlasting() {} // NOLINT(modernize-use-equals-default): that would be deleted

  TcompactArena arena;
};

constinit Tlasting gArena8(8);
constinit Tlasting gArena16(16);
constinit Tlasting gArena24(24);
constinit Tlasting gArena32(32);

// Gives all their pages back when the library ends. Whoever is late finds them new.
const struct Tend
{
  ~Tend()
  {
    for (Tlasting* each : {&gArena8, &gArena16, &gArena24, &gArena32})
    {
      const unsigned blockSize = each->arena.blockSize();
      each->arena.~TcompactArena();
      new (each) Tlasting(blockSize);
    }
  }
} gEnd;

} // namespace

void* compactAllocate8()
{
  return gArena8.arena.allocate();
}

void* compactAllocate16()
{
  return gArena16.arena.allocate();
}

void* compactAllocate24()
{
  return gArena24.arena.allocate();
}

void* compactAllocate32()
{
  return gArena32.arena.allocate();
}

unsigned char compactDeallocate8(void* block)
{
  return gArena8.arena.deallocate(block);
}

unsigned char compactDeallocate16(void* block)
{
  return gArena16.arena.deallocate(block);
}

unsigned char compactDeallocate24(void* block)
{
  return gArena24.arena.deallocate(block);
}

unsigned char compactDeallocate32(void* block)
{
  return gArena32.arena.deallocate(block);
}

unsigned char compactPreAllocate8(unsigned int blocks)
{
  return gArena8.arena.preAllocate(blocks);
}

unsigned char compactPreAllocate16(unsigned int blocks)
{
  return gArena16.arena.preAllocate(blocks);
}

unsigned char compactPreAllocate24(unsigned int blocks)
{
  return gArena24.arena.preAllocate(blocks);
}

unsigned char compactPreAllocate32(unsigned int blocks)
{
  return gArena32.arena.preAllocate(blocks);
}
