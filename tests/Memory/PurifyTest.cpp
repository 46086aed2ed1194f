// A program of its own: purify mode is for the whole process.
#include "Foundation/Memory/CompactArenas.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TstackArena.h"
#include "Foundation/Memory/TvariantArena.h"
#include "tests/Memory/Pages.h"

#include <cstdlib>

namespace {

// Before any arena asks.
const int gPurify = putenv(const_cast<char*>("PURIFY=1"));

TEST(Purify, BlocksStandForThemselves)
{
  ASSERT_TRUE(gPurify == 0 && TpureArena::usePurify());
  Pages pages;
  TfixedArena fixed(40, 10, pages);
  TvariantArena variant(4096, TvariantArena::kNoLimit, pages);
  TstackArena stack(4096, pages);
  for (int round = 0; round < 2; ++round)
  {
    // In the middle, at the end and at the beginning of their lists, and some that are left.
    void* f[] = {fixed.allocate(), fixed.allocate(17), fixed.allocate(), fixed.allocate()};
    void* v[] = {variant.allocate(1), variant.allocate(100), variant.allocate(13), variant.allocate(5)};
    EXPECT_TRUE(stack.allocate(100) && stack.allocate(10, 3));
    for (void* block : {f[1], f[0], f[3]})
      fixed.free(block);
    EXPECT_EQ(variant.allocatedMemory(), 8 + 104 + 16 + 8);
    std::memset(v[1], 'v', 100);
    v[1] = variant.reallocate(v[1], 201);
    EXPECT_EQ(std::string(static_cast<char*>(v[1]), 100), std::string(100, 'v'));
    unsigned freed = 0;
    TvariantArena::deallocate(v[0], freed);
    EXPECT_EQ(freed, 1U);
    TheapArena::deallocate(v[3]);
    EXPECT_EQ(variant.allocatedMemory(), 16 + 208);
    fixed.reset();
    variant.reset();
    stack.reset();
    EXPECT_EQ(variant.allocatedMemory(), 0);
  }
  EXPECT_TRUE(variant.allocate(10) && fixed.allocate() && stack.allocate(8)); // for the destructors
  EXPECT_TRUE(compactDeallocate32(compactAllocate8()) && fixed.preAllocate(10) && compactPreAllocate16(10));
  EXPECT_TRUE(pages.asked().empty());
}

} // namespace
