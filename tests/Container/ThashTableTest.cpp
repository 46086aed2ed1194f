#include "Foundation/Container/TptrHashTable.h"
#include "Foundation/Debug/Texception.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <deque>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

// Shows what derived tables work with. The hash is the key itself.
class Table : public ThashTable
{
public:
  using ThashTable::reinitializeTable;
  using ThashTable::setTableSize;
  using ThashTable::shrinkTable;
  using ThashTable::ThashTable;

  bool insert(TuInt32 key) { return insertWithHash(&fEntries.emplace_back(), key); }
  std::vector<TuInt32> keys() const // in order of iteration
  {
    std::vector<TuInt32> found;
    for (const ThashTableEntry& each : *this)
      found.push_back(each.fHash);
    return found;
  }

private:
  std::deque<ThashTableEntry> fEntries;
};

struct Mark : TptrHashTableEntry
{
  int fUses;
};
using Marks = ThashTableOf<Mark, TptrHashTable>;
static_assert(std::forward_iterator<Marks::iterator> && std::forward_iterator<ThashTable::const_iterator>);
static_assert(std::is_convertible_v<Marks::iterator, Marks::const_iterator>);
static_assert(!std::is_convertible_v<Marks::const_iterator, Marks::iterator>);

// The rules of the bucket count.
struct Model
{
  TuInt32 least, most = 0, buckets = least, depth = 0;
  std::multiset<TuInt32> keys = {};

  bool tooFew() const { return depth == 0 && keys.size() < buckets / 8 && buckets / 2 >= least; }
  bool tooMany() const { return depth == 0 && keys.size() > buckets * 3 / 8 && buckets * 2 <= most; }
  void fit()
  {
    for (const bool shrinks = tooFew(); shrinks ? tooFew() : tooMany();)
      buckets = shrinks ? buckets / 2 : buckets * 2;
  }
};

TEST(ThashTable, keepsItsOrder)
{
  Table table(8, 16);
  for (const TuInt32 key : {5U, 2U, 13U}) // 5 and 13 share a bucket
    table.insert(key);
  EXPECT_EQ(table.keys(), (std::vector<TuInt32>{2, 13, 5}));
  table.insert(29);
  EXPECT_EQ(table.keys(), (std::vector<TuInt32>{2, 5, 13, 29})); // reversed as the table grew
  ThashTableIterator at(table);
  EXPECT_TRUE(at._first() && at._next());
  at._remove(at.entry(), at.bucket());
  EXPECT_TRUE(at._next() && at._next() && at.entry()->fHash == 29); // on from what is no longer there
  EXPECT_FALSE(at._next() || at._next());
}

TEST(ThashTable, followsItsModel)
{
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round)
  {
    const auto limit = [&random] { return (4U << random() % 6) + TuInt32(random() % 3) - 1; }; // at a power of two
    const TuInt32 least = round % 7 ? limit() : 0, most = round % 5 ? limit() : UINT32_MAX;
    Model model{std::max<TuInt32>(8, std::bit_ceil(least))};
    model.most = round % 5 ? std::max(model.least, std::bit_ceil(most)) : 0x80000000;
    Table table(least, most);
    for (int step = 0, bias = 50; step < 2000; ++step)
    {
      bias = step % 200 ? bias : int(random() % 100); // how insertions prevail over removals
      const TuInt32 key = TuInt32(random() % 300);
      const bool locked = model.depth > 0;
      const unsigned choice = unsigned(random() % 50);
      ThashTableIterator at(table);
      if (choice == 0)
        model.depth += table.lockSize();
      else if (choice == 1)
      {
        EXPECT_EQ(table.unlockSize(), locked);
        if (locked && --model.depth == 0)
          model.fit();
      }
      else if (choice == 2)
      {
        EXPECT_EQ(table.resize(), !locked);
        model.fit();
      }
      else if (choice == 3)
      {
        EXPECT_TRUE(table.shrinkTable());
        model.buckets /= model.tooFew() ? 2 : 1;
      }
      else if (choice == 4 && step % 20 == 0)
      {
        table.reinitializeTable();
        model.keys.clear();
        model.buckets = locked ? model.buckets : model.least;
      }
      else if (int(random() % 100) < bias)
      {
        EXPECT_TRUE(table.insert(key));
        model.keys.insert(key);
        model.buckets *= model.tooMany() ? 2 : 1;
      }
      else if (at._first(key))
      {
        model.keys.extract(at.entry()->fHash);
        at._remove(at.entry(), at.bucket());
      }
      ASSERT_TRUE(table.validate());
      ASSERT_EQ(table.bucketCount(), model.buckets);
    }
    std::vector<TuInt32> keys = table.keys();
    std::sort(keys.begin(), keys.end());
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), model.keys.begin(), model.keys.end()));
  }
}

TEST(ThashTable, takesAnySizeThatADerivedOneGives)
{
  Table table(8, 16);
  for (const TuInt32 buckets : {1024U, 8U, 4096U})
  {
    EXPECT_TRUE(table.lockSize() && table.setTableSize(buckets) && table.insert(buckets) && table.validate());
    EXPECT_EQ(table.bucketCount(), buckets);
    EXPECT_TRUE(table.unlockSize() && table.validate());
  }
  EXPECT_EQ(table.bucketCount(), 16U);
}

TEST(TptrHashTable, findsWalksAndGivesBack)
{
  std::vector<Mark> marks(4000);
  Marks table;
  for (Mark& each : marks)
    table.insert(&each, &each);
  for (Mark& each : table)
    ++each.fUses;
  for (Mark& each : marks)
    EXPECT_TRUE(each.fUses == 1 && !table.find(&each.fUses) && table.remove(&each) == &each && !table.remove(&each));
  EXPECT_EQ(table.bucketCount(), 8U);
}

TEST(TptrHashTable, spreadsAddresses)
{
  // At equal distances, as allocators give them, within the bits of an address. Random ones take 0.88 of 3/8 full
  // tables.
  const int bits = sizeof(void*) > 4 ? 47 : 32;
  for (const TuInt32 buckets : {1U << 10, 1U << 14, 1U << 19})
  {
    const TuInt32 count = buckets / 8 * 3;
    for (const TuInt32 distance : {1U, 3U, 5U, 7U})
    {
      for (int shift = 3; TuInt64(count) * distance << shift >> bits == 0; ++shift)
      {
        std::vector<bool> taken(buckets);
        for (std::uintptr_t i = 1; i <= count; ++i)
          taken[ThashTable::tableIndex(buckets, TptrHashTable::hash(reinterpret_cast<void*>(i * distance << shift)))] =
            true;
        EXPECT_GT(std::count(taken.begin(), taken.end(), true), count * 0.67)
          << buckets << ' ' << distance << ' ' << shift;
      }
    }
  }
}

#if FAILING_MEMORY
TEST(ThashTable, livesWithoutMemory)
{
  std::vector<TptrHashTableEntry> entries(200);
  forEachFailingAllocation([&] {
    try
    {
      TptrHashTable table(8, 256);
      for (TptrHashTableEntry& entry : entries)
      {
        table.insert(&entry, &entry);
        const bool locked = table.lockSize();
        const bool unlocked = table.unlockSize();
        EXPECT_EQ(unlocked,
                  locked && (table.entryCount() <= table.bucketCount() * 3 / 8 || table.bucketCount() == 256));
        EXPECT_TRUE(table.validate() && table.find(&entry) == &entry);
      }
      for (TptrHashTableEntry& entry : entries)
        EXPECT_TRUE(table.remove(&entry) == &entry && table.validate());
    }
    catch (const TmemoryException&) // there were no first buckets
    {
    }
  });
  Table table(8, 1024);
  for (TuInt32 i = 0; i < 200; ++i)
    table.insert(i);
  failAllocations(0, INT_MAX);
  EXPECT_FALSE(table.setTableSize(2048));
  EXPECT_TRUE(table.validate() && table.entryCount() == 200);
  table.reinitializeTable();
  EXPECT_TRUE(table.validate() && table.entryCount() == 0 && table.bucketCount() == 1024);
  failAllocations(0, 0);
}
#endif

} // namespace
