#include "Foundation/Memory/TvariantArena.h"
#include "Foundation/Memory/Poison.h"
#include "tests/Memory/Pages.h"

#include <algorithm>
#include <random>

namespace {

constexpr unsigned kNoLimit = TvariantArena::kNoLimit;

TEST(VariantArena, SizesOfPagesAndBlocks)
{
  Pages pages;
  TvariantArena arena(4096, kNoLimit, pages);
  EXPECT_EQ(arena.variantPageSize(), 6816U);
  EXPECT_EQ(arena.allocate(0), nullptr);
  void* block = arena.allocate(1);
  EXPECT_EQ(TvariantArena::sizeOfBlock(block), 8U);
  EXPECT_NE(arena.allocate(6801), nullptr); // with its header 6,824
  EXPECT_EQ(pages.asked(), (Sizes{32 + 6816, 32 + 6824}));
  arena.setVariantPageSize(1000, 100);
  EXPECT_EQ(arena.variantPageSize(), 1160U);
  const unsigned expected[][2] = {{136, 17}, {144, 22}, {184, 22}, {192, 23}, {248, 23}, {256, 26}, {512, 30}};
  for (const auto& [payload, index] : expected)
    EXPECT_EQ(TvariantArena::freeListIndex(payload), index);
}

TEST(VariantArena, ReallocatesInPlaceWhereItCan)
{
  Pages pages;
  TvariantArena arena(4096, kNoLimit, pages);
  char* a = bytes(std::memset(arena.allocate(100), 'a', 100));
  char* b = bytes(arena.allocate(100));
  EXPECT_EQ(arena.reallocate(a, 72), a); // too little to cut off
  EXPECT_EQ(TvariantArena::sizeOfBlock(a), 104U);
  EXPECT_EQ(arena.reallocate(a, 64), a);
  EXPECT_EQ(TvariantArena::sizeOfBlock(a), 64U);
  EXPECT_EQ(arena.reallocate(a, 104), a); // into what was cut off
  char* moved = bytes(arena.reallocate(a, 112));
  EXPECT_NE(moved, a);
  EXPECT_EQ(std::string(moved, 64), std::string(64, 'a'));
  EXPECT_EQ(arena.reallocate(moved, 3000), moved); // into the end of the page
  EXPECT_EQ(arena.allocatedMemory(), 104 + 3000);
  EXPECT_EQ(arena.reallocate(b, 0), nullptr);
  EXPECT_EQ(arena.allocatedMemory(), 3000);
  EXPECT_EQ(TvariantArena::sizeOfBlock(arena.reallocate(nullptr, 9)), 16U);
  EXPECT_EQ(arena.checkConsistency(), 0);
}

TEST(VariantArena, EmptyPagesAreKeptWhole)
{
  Pages pages;
  for (unsigned char saves : {'\0', '\1'})
  {
    TvariantArena arena(4096, kNoLimit, pages, nullptr, saves);
    for (void* block : {arena.allocate(3000), arena.allocate(6000)})
      arena.free(block);
    if (!saves)
      arena.purgePage();
    EXPECT_EQ(arena.firstPage(), nullptr);
    EXPECT_TRUE(arena.allocate(6000) && arena.allocate(6000));
    EXPECT_EQ(pages.asked().size(), 2U);
    arena.reset();
    EXPECT_TRUE(arena.preAllocate(100, 50));
    EXPECT_TRUE(pages.asked().empty() && arena.preAllocate(100, 100));
    EXPECT_EQ(pages.asked(), Sizes{32 + 100 * 120});
    arena.purgePage();
    EXPECT_TRUE(arena.preAllocate(8, 1000) && pages.asked().size() == 1);
    for (int i = 0; i < 1000; ++i)
      arena.allocate(8);
    EXPECT_TRUE(pages.asked().empty());
    EXPECT_EQ(arena.checkConsistency(), 0);
  }
}

// What the arena is to do, said in the simplest way.
struct Model
{
  struct Block
  {
    unsigned payload;
    bool free;
    unsigned stamp;
    char* page;
  };

  std::map<char*, Block> blocks; // by the payload's address
  char* rover = nullptr;
  unsigned stamp = 0;
  bool tailFirst;

  std::map<char*, Block>::iterator find(unsigned payload, unsigned limit)
  {
    const auto inRover = [this](const auto& entry) { return entry.second.page == rover; };
    const auto tail = std::find_if(blocks.rbegin(), blocks.rend(), inRover);
    if (tailFirst && rover && tail->second.free && tail->second.payload >= payload)
      return std::prev(tail.base());
    std::map<unsigned, std::map<unsigned, char*, std::greater<>>> lists;
    for (const auto& [address, block] : blocks)
    {
      if (block.free)
        lists[TvariantArena::freeListIndex(block.payload)][block.stamp] = address;
    }
    for (auto list = lists.lower_bound(TvariantArena::freeListIndex(payload)); list != lists.end(); ++list)
    {
      unsigned looks = 0;
      for (const auto& [when, address] : list->second)
      {
        if (list->first >= 18 && looks++ == limit)
          break;
        if (blocks[address].payload >= payload)
          return blocks.find(address);
      }
    }
    return blocks.end();
  }

  char* allocate(unsigned payload, unsigned limit, Pages& pages)
  {
    auto found = find(payload, limit);
    if (const Sizes asked = pages.asked(); !asked.empty())
    {
      EXPECT_EQ(found, blocks.end());
      char* page = bytes(pages.fLast);
      found = blocks.emplace(page + 48, Block{asked[0] - 48, true, ++stamp, page}).first;
    }
    if (found == blocks.end())
      return nullptr;
    Block& block = found->second;
    block.free = false;
    rover = block.page;
    if (block.payload - payload >= 40)
    {
      blocks[found->first + payload + 16] = {block.payload - payload - 16, true, ++stamp, block.page};
      block.payload = payload;
    }
    else if (const auto next = std::next(found); next == blocks.end() || next->second.page != rover)
      rover = nullptr;
    return found->first;
  }

  void free(char* address)
  {
    auto block = blocks.find(address);
    block->second.free = true;
    const auto joins = [](const Block& a, const Block& b) { return a.free && b.free && a.page == b.page; };
    if (block != blocks.begin() && joins(std::prev(block)->second, block->second))
      --block;
    for (auto next = std::next(block); next != blocks.end() && joins(block->second, next->second);)
    {
      block->second.payload += 16 + next->second.payload;
      next = blocks.erase(next);
    }
    block->second.stamp = ++stamp;
  }
};

TEST(VariantArena, PlacesBlocksAsTheModel)
{
  std::mt19937 random(7);
  for (int round = 0; round < 12; ++round)
  {
    Pages pages;
    const bool tailFirst = round % 2;
    const unsigned most = round % 3 == 0 ? 250 : round % 3 == 1 ? 700 : 6000;
    TvariantArena arena(2048, kNoLimit, pages, nullptr, 0, tailFirst);
    Model model{{}, nullptr, 0, tailFirst};
    std::vector<Filled> live;
    for (int step = 0; step < 3000; ++step)
    {
      if (live.size() < 10 || (live.size() < 150 && random() % 2))
      {
        const unsigned size = unsigned(random() % most) + 1;
        const unsigned limit = round < 6 ? kNoLimit : unsigned(random() % 4);
        void* block = arena.allocate(size, 1, limit);
        ASSERT_EQ(model.allocate((size + 7) / 8 * 8, limit, pages), block) << "round " << round << " step " << step;
        live.push_back(Filled{static_cast<unsigned char*>(block), size, static_cast<unsigned char>(random())}.fill());
      }
      else
      {
        std::swap(live[random() % live.size()], live.back());
        ASSERT_TRUE(live.back().holds());
        TheapArena::deallocate(live.back().start);
        model.free(reinterpret_cast<char*>(live.back().start));
        live.pop_back();
      }
      ASSERT_TRUE(step % 100 || arena.checkConsistency() == 0);
    }
  }
}

// The upper halves of six-byte addresses mean nothing where an address has four.
constexpr unsigned kFirstCounting = sizeof(void*) == 8 ? 0 : 20;

// Each word of the pages is overwritten in turn, and found out where the arena depends on it.
TEST(VariantArena, CorruptionIsFound)
{
  Pages pages;
  TvariantArena arena(600, kNoLimit, pages);
  std::vector<void*> blocks;
  for (unsigned i = 0; i < 30; ++i)
    blocks.push_back(arena.allocate(i * 37 % 250 + 1));
  for (unsigned i = 0; i < 30; i += 2)
    arena.free(blocks[i]);
  const auto matters = [](char* page, unsigned at) {
    if (at < 32)
      return at >= kFirstCounting;
    unsigned block = 48, size = 0;
    const auto word = [&] { return Tpoison::peek(*reinterpret_cast<TuInt32*>(page + block - 8)); };
    while (size = word() / 2, at >= block + size)
      block += size + 16;
    if (at < block && at != block - 12)
      return true;
    return (word() & 1) && (at < block || (at < block + 8 && sizeof(void*) == 8)); // links of a free block
  };
  for (const auto& [page, size] : pages.fHeld)
  {
    for (unsigned at = 0; at + 4 <= size; at += 4)
    {
      TuInt32& word = *reinterpret_cast<TuInt32*>(page + at);
      const TuInt32 old = Tpoison::peek(word);
      const bool counts = matters(page, at);
      const TuInt32 wrongs[] = {old ^ 1U, old ^ 0x10U, old ^ 0x80000000U, old + 8U, ~old, 0U, 0xFFFFFFFFU};
      // One in 65,536 checksums of a page's links agrees by chance, but none after a change of one bit.
      for (unsigned i = 0; i < (at < 20 ? 3 : std::size(wrongs)); ++i)
      {
        Tpoison::poke(word, wrongs[i]);
        const long faults = arena.checkConsistency();
        Tpoison::poke(word, old);
        EXPECT_TRUE(faults > 0 || !counts || wrongs[i] == old) << "byte " << at << ": " << old << ", " << wrongs[i];
      }
      ASSERT_EQ(arena.checkConsistency(), 0);
    }
  }
}

} // namespace
