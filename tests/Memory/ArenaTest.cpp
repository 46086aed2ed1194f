#include "Foundation/Memory/CompactArenas.h"
#include "Foundation/Memory/TcompactArena.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TstackArena.h"
#include "Foundation/Memory/TthreadArena.h"
#include "Foundation/Memory/TvariantArena.h"
#include "tests/Memory/Pages.h"

#include <random>
#ifdef FOUNDATION_ASAN
#  include <sanitizer/asan_interface.h>
#endif

namespace {

TEST(Arena, FixedTakesSlotsInOrderThenReleasedOnesThenAPage)
{
  Pages pages;
  TfixedArena arena(20, 3, pages);
  char* a = bytes(arena.allocate());
  char* b = bytes(arena.allocate(1));
  EXPECT_EQ(pages.asked(), Sizes{32 + 3 * (8 + 24)});
  EXPECT_EQ(a, bytes(pages.fLast) + 40);
  EXPECT_EQ(b, a + 32);
  arena.free(a);
  TheapArena::deallocate(b);
  TheapArena::deallocate(nullptr);
  EXPECT_EQ(arena.allocate(), a + 64); // an untouched slot comes first
  EXPECT_EQ(arena.allocate(4, 6), b);
  EXPECT_EQ(arena.allocate(4, 7), nullptr);
  EXPECT_EQ(arena.allocate(), a);
  arena.setNumBlocksPerPage(5);
  EXPECT_TRUE(arena.preAllocate(7)); // two more than a page has
  EXPECT_EQ(pages.asked(), Sizes{32 + 7 * 32});
  for (int i = 0; i < 7; ++i)
    EXPECT_NE(arena.allocate(), nullptr);
  EXPECT_EQ(arena.checkConsistency(), 0);
  reinterpret_cast<TuInt32*>(arena.firstPage())[6] += 1; // the count
  EXPECT_GT(arena.checkConsistency(), 0);
  arena.reset();
  for (int i = 0; i < 10; ++i)
    EXPECT_NE(arena.allocate(), nullptr);
  EXPECT_TRUE(pages.asked().empty());
  EXPECT_EQ(arena.footPrint(), 128U + 256U);
  TfixedArena other(24, 4, pages);
  arena.free(other.allocate());
  EXPECT_EQ(other.checkConsistency() + arena.checkConsistency(), 0);
}

TEST(Arena, StackPacksBlocksAndOpensPagesAsLargeAsNeeded)
{
  Pages pages;
  TstackArena arena(20, 4, pages);
  char* a = bytes(arena.allocate(1));
  EXPECT_EQ(a, bytes(pages.fLast) + 32);
  EXPECT_EQ(arena.allocate(9, 2), a + 8);
  EXPECT_EQ(arena.allocate(56), a + 40); // fills the page
  EXPECT_EQ(arena.allocate(0), nullptr);
  EXPECT_NE(arena.allocate(104), nullptr);
  EXPECT_TRUE(arena.preAllocate(200));
  EXPECT_EQ(pages.asked(), (Sizes{128, 136, 232}));
  arena.reset();
  EXPECT_TRUE(arena.allocate(96) && arena.allocate(104) && arena.allocate(200));
  EXPECT_TRUE(pages.asked().empty());
}

TEST(Arena, RequestsThatWrapGetNothing)
{
  Pages pages;
  TstackArena stack(0xFFFFFFFF, pages);
  TvariantArena variant(4096, 0xFFFFFFFF, pages), wide(0xFFFFFFFF, 0xFFFFFFFF, pages);
  TfixedArena fixed(0xFFFFFFFF, 1, pages), many(8, 0x10000000, pages);
  TcompactArena compact(0xFFFFFFFF, 4096, pages), large(8, 0xFFFFFFFF, pages);
  void* block = variant.allocate(8);
  for (unsigned size : {0x7FFFFFF9U, 0xFFFFFFF0U, 0xFFFFFFFFU})
  {
    EXPECT_FALSE(variant.allocate(size) || variant.reallocate(block, size) || variant.allocate(size, 0xFFFFFFFF, 1));
    EXPECT_FALSE(variant.preAllocate(size, 0xFFFFFFFF) || stack.allocate(size, 3));
  }
  EXPECT_FALSE(stack.allocate(0xFFFFFFFF) || stack.allocate(8) || wide.allocate(8));
  EXPECT_FALSE(fixed.allocate() || many.allocate() || compact.allocate() || large.allocate());
  EXPECT_EQ(pages.asked().size(), 1U);
}

TEST(Arena, CompactTakesTheCursorThenSearches)
{
  Pages pages;
  for (unsigned size : {8U, 24U})
  {
    TcompactArena arena(size, 48 + 100 * size + 7, pages);
    std::vector<char*> blocks(201);
    for (char*& block : blocks)
      block = bytes(arena.allocate());
    const unsigned request = 48 + 100 * size + 7 + 16;
    EXPECT_EQ(pages.asked(), (Sizes{request, request, request}));
    EXPECT_FALSE(arena.deallocate(blocks[0] + 1) || arena.deallocate(blocks[0] + 100 * size) ||
                 arena.deallocate(&size) || arena.deallocate(nullptr));
    EXPECT_TRUE(arena.deallocate(blocks[10]) && arena.deallocate(blocks[70]));
    EXPECT_FALSE(arena.deallocate(blocks[10]));
    // Behind the end of the page: around the last release where a shift finds it, otherwise from the beginning.
    EXPECT_EQ(arena.allocate(), blocks[size == 8 ? 70 : 10]);
    EXPECT_EQ(arena.allocate(), blocks[size == 8 ? 10 : 70]);
    EXPECT_EQ(arena.allocate(), blocks[200] + size); // the first page with room
    for (unsigned i = 0; i < 100; ++i)
      EXPECT_TRUE(arena.deallocate(blocks[i]));
    EXPECT_EQ(pages.fHeld.size(), 3U);
    EXPECT_TRUE(arena.preAllocate(198)); // 98 in use, 100 saved
    EXPECT_TRUE(pages.asked().empty());
    TcompactArena::purge();
    EXPECT_EQ(pages.fHeld.size(), 2U);
    EXPECT_EQ(arena.footPrint(), 2 * request);
    EXPECT_FALSE(arena.deallocate(blocks[0]));
    reinterpret_cast<TuInt32*>(arena.firstPage())[6] ^= 1; // the count
    EXPECT_GT(arena.checkConsistency(), 0);
    arena.reset();
    EXPECT_EQ(arena.checkConsistency(), 0);
    EXPECT_TRUE(arena.preAllocate(201));
    EXPECT_EQ(pages.asked(), Sizes{request});
  }
}

TEST(Arena, CompactFamilyReleasesForEachOther)
{
  void* block = compactAllocate16();
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
  EXPECT_TRUE(compactDeallocate8(block));
  EXPECT_FALSE(compactDeallocate8(block));
  static const char kName[] = "family", kSame[] = "family";
  Pages pages;
  TcompactArena a(8, 1024, pages, kName), b(32, 1024, pages, kName), stranger(32, 1024, pages, kSame);
  EXPECT_TRUE(a.deallocate(b.allocate()));
  EXPECT_FALSE(a.deallocate(stranger.allocate()));
}

TEST(Arena, CompactMatchesAModelOverManyPages)
{
  std::mt19937 random(1);
  Pages pages;
  for (unsigned size : {8U, 24U, 64U})
  {
    TcompactArena arena(size, 512, pages);
    std::vector<Filled> live;
    for (int step = 0; step < 30000 || !live.empty(); ++step)
    {
      if (step < 30000 && (live.empty() || random() % 1000 < (step / 5000 % 2 ? 400U : 600U)))
      {
        const unsigned char pattern = static_cast<unsigned char>(random());
        live.push_back(Filled{static_cast<unsigned char*>(arena.allocate()), size, pattern}.fill());
        continue;
      }
      std::swap(live[random() % live.size()], live.back());
      ASSERT_TRUE(live.back().holds() && arena.deallocate(live.back().start));
      live.pop_back();
      ASSERT_TRUE(step % 500 || arena.checkConsistency() == 0);
      if (step % 500 == 0)
        TcompactArena::purge();
    }
    EXPECT_EQ(arena.firstPage(), nullptr);
  }
}

TEST(Arena, PoisonCoversWhatIsNotInUse)
{
#ifdef FOUNDATION_ASAN
  const auto isPoisoned = [](void* block, unsigned size) { // all of it, or nothing of it
    const bool first = __asan_address_is_poisoned(block);
    for (unsigned i = 0; i < size; ++i)
      EXPECT_EQ(__asan_address_is_poisoned(bytes(block) + i) != 0, first) << i;
    return first;
  };
  Pages pages;
  TfixedArena fixed(24, 4, pages);
  TvariantArena variant(4096, 0xFFFFFFFF, pages);
  TstackArena stack(4096, pages);
  TcompactArena compact(24, 4096, pages);
  void* blocks[] = {fixed.allocate(), variant.allocate(24), stack.allocate(24), compact.allocate()};
  for (void* block : blocks)
  {
    EXPECT_FALSE(isPoisoned(block, 24));
    EXPECT_TRUE(isPoisoned(bytes(block) + 24, 16)); // a header, or what is unused
  }
  EXPECT_TRUE(isPoisoned(bytes(blocks[0]) - 8, 8));
  EXPECT_TRUE(isPoisoned(bytes(blocks[1]) - 16, 16));
  EXPECT_FALSE(isPoisoned(variant.reallocate(blocks[1], 80), 80));
  EXPECT_TRUE(isPoisoned(bytes(variant.reallocate(blocks[1], 24)) + 24, 56));
  fixed.free(blocks[0]);
  variant.free(blocks[1]);
  stack.reset();
  compact.deallocate(blocks[3]);
  for (void* block : blocks)
    EXPECT_TRUE(isPoisoned(block, 24));
#endif
}

// Takes, resizes and releases blocks of each kind while pages fail; whether one was asked for in vain.
bool runShort(Pages& pages, unsigned seed)
{
  constexpr unsigned kVariant = 128; // and above it: the patterns of blocks that change their sizes
  std::mt19937 random(seed);
  TfixedArena fixed(40, 7, pages);
  TvariantArena variant(300, 0xFFFFFFFF, pages, nullptr, 1);
  TstackArena stack(200, pages);
  TcompactArena compact(16, 400, pages);
  std::vector<Filled> live;
  const auto add = [&live](void* block, unsigned size, unsigned char pattern) {
    if (block)
      live.push_back(Filled{static_cast<unsigned char*>(block), size, pattern}.fill());
  };
  const auto faults = [&] {
    return fixed.checkConsistency() + variant.checkConsistency() + compact.checkConsistency();
  };
  for (unsigned i = 0; i < 60; ++i)
  {
    add(fixed.allocate(), 40, 'f');
    add(variant.allocate(i * 11 + 1), i * 11 + 1, static_cast<unsigned char>(kVariant + i));
    add(stack.allocate(i + 1), i + 1, 's');
    add(compact.allocate(), 16, 'c');
    if (i % 7 == 0)
      fixed.preAllocate(i), variant.preAllocate(i, 3), stack.preAllocate(i * 10), compact.preAllocate(i);
    for (int tries = 0; tries < 8 && !live.empty(); ++tries)
    {
      Filled& block = live[random() % live.size()];
      const unsigned size = unsigned(random() % 700) + 1;
      void* moved = block.pattern >= kVariant ? variant.reallocate(block.start, size) : nullptr;
      if (!moved)
        continue;
      const Filled kept{static_cast<unsigned char*>(moved), std::min(size, block.size), block.pattern};
      EXPECT_TRUE(kept.holds());
      block = Filled{kept.start, size, block.pattern}.fill();
    }
    EXPECT_EQ(faults(), 0);
  }
  for (const Filled& block : live)
  {
    EXPECT_TRUE(block.holds());
    EXPECT_TRUE(block.pattern != 'c' || compact.deallocate(block.start));
    if (block.pattern == 'f' || block.pattern >= kVariant)
      TheapArena::deallocate(block.start);
  }
  EXPECT_EQ(variant.allocatedMemory() + faults(), 0);
  return pages.failed();
}

// Each page request fails in turn, once or from then on.
TEST(Arena, FailedPageRequestsLeaveArenasWhole)
{
  bool failed = true;
  for (int first = 0; failed; ++first)
  {
    Pages once(first, true), always(first, false);
    failed = runShort(once, unsigned(first));
    failed |= runShort(always, unsigned(first));
  }
}

TEST(Arena, ThreadsHaveArenasByNumber)
{
  constexpr long kLast = TthreadArena::kMaxThreads - 1;
  EXPECT_FALSE(TthreadArena::open(-1, "x") || TthreadArena::open(kLast + 1, "x"));
  TthreadArena* arena = TthreadArena::open(kLast, "worker");
  ASSERT_TRUE(arena && TthreadArena::open(kLast, nullptr) == arena && TthreadArena::open(0, "worker") != arena);
  arena->close();
  EXPECT_TRUE(!TthreadArena::close(kLast) && TthreadArena::close(0));
}

} // namespace
