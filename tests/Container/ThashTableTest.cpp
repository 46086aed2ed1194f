#include "Foundation/Container/TptrHashTable.h"
#include "Foundation/Debug/Texception.h"
#include "tests/Faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace {

struct Entry : ThashTableEntry
{
  int fKey;
};

// Shows what derived tables work with. Its hash is the key itself.
class Table : public ThashTable
{
public:
  using ThashTable::reinitializeTable;
  using ThashTable::setTableSize;
  using ThashTable::shrinkTable;
  using ThashTable::ThashTable;
  using ThashTable::unlinkEntry;

  bool insert(int key)
  {
    fEntries.push_back({});
    fEntries.back().fKey = key;
    return insertWithHash(&fEntries.back(), TuInt32(key));
  }
  Entry* find(int key) const
  {
    return findEntry<Entry>(TuInt32(key), [key](const Entry& each) { return each.fKey == key; });
  }
  std::vector<int> keys() const // in order of iteration
  {
    std::vector<int> found;
    std::for_each(beginAs<const Entry>(), TentryIterator<const Entry>(),
                  [&](const Entry& each) { found.push_back(each.fKey); });
    return found;
  }

private:
  std::deque<Entry> fEntries;
};

// The rules of the bucket count.
struct Model
{
  TuInt32 least = 8, most = 8, buckets = 8, depth = 0;
  std::multiset<int> keys;

  bool tooFew(TuInt32 size) const { return keys.size() < size / 8 && size / 2 >= least; }
  bool tooMany(TuInt32 size) const { return keys.size() > size * 3 / 8 && size * 2 <= most; }
  void add(int key)
  {
    keys.insert(key);
    if (depth == 0 && tooMany(buckets))
      buckets *= 2;
  }
  void fit()
  {
    for (const bool shrinks = tooFew(buckets); depth == 0 && (shrinks ? tooFew(buckets) : tooMany(buckets));)
      buckets = shrinks ? buckets / 2 : buckets * 2;
  }
};

TEST(ThashTable, roundsItsLimits)
{
  const struct
  {
    unsigned least, most, buckets, grown; // bucket counts before and after a thousand insertions
  } cases[] = {
    {0, 0, 8, 8}, {9, 5, 16, 16}, {8, 64, 8, 64}, {8, 65, 8, 128}, {33, 0xFFFFFFFF, 64, 4096}, {8, 0x80000001, 8, 4096},
  };
  for (const auto& each : cases)
  {
    Table table(each.least, each.most);
    EXPECT_EQ(table.bucketCount(), each.buckets);
    EXPECT_TRUE(table.validate());
    for (int i = 0; i < 1000; ++i)
      EXPECT_TRUE(table.insert(i));
    EXPECT_EQ(table.bucketCount(), each.grown);
    EXPECT_TRUE(table.validate());
  }
}

TEST(ThashTable, keepsItsOrder)
{
  Table table(8, 16);
  EXPECT_FALSE(ThashTableIterator(table)._first());
  EXPECT_EQ(table.begin(), table.end());
  for (const int key : {5, 13, 2}) // 5 and 13 share a bucket
    table.insert(key);
  EXPECT_EQ(table.keys(), (std::vector<int>{2, 13, 5}));
  table.setTableSize(32); // goes from bucket to bucket and from head to tail
  table.setTableSize(8);
  EXPECT_EQ(table.keys(), (std::vector<int>{2, 13, 5}));
  Entry* five = table.find(5);
  table.unlinkEntry(five);
  table.insert(21);
  EXPECT_EQ(table.bucketCount(), 8U);
  table.insert(29);
  EXPECT_EQ(table.bucketCount(), 16U);
  EXPECT_EQ(table.keys(), (std::vector<int>{2, 21, 13, 29})); // reversed

  ThashTableIterator at(table);
  EXPECT_TRUE(at._first(13 + 16));
  EXPECT_EQ(static_cast<Entry*>(at.entry())->fKey, 13);
  at._remove(five, at.bucket()); // not there
  EXPECT_EQ(table.entryCount(), 4U);
  at._remove(at.entry(), at.bucket());
  EXPECT_TRUE(at._next()); // on from what is no longer there
  EXPECT_EQ(static_cast<Entry*>(at.entry())->fKey, 29);
  EXPECT_FALSE(at._next());
  EXPECT_FALSE(at._next());
  EXPECT_FALSE(at._first(3));
  EXPECT_EQ(table.entryCount(), 3U);
  EXPECT_TRUE(table.validate());
}

TEST(ThashTable, followsItsModel)
{
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round)
  {
    Model model;
    model.least = model.buckets = 8U << random() % 3;
    model.most = model.least << random() % 8;
    Table table(model.least, model.most);
    unsigned bias = 0; // how insertions prevail over removals
    for (int step = 0; step < 2000; ++step)
    {
      if (step % 200 == 0)
        bias = unsigned(random() % 100);
      const int key = int(random() % 300);
      const unsigned choice = unsigned(random() % 100);
      if (choice == 0)
        model.depth += table.lockSize();
      else if (choice < 3)
      {
        EXPECT_EQ(table.unlockSize(), model.depth > 0);
        if (model.depth > 0 && --model.depth == 0)
          model.fit();
      }
      else if (choice == 3)
      {
        EXPECT_EQ(table.resize(), model.depth == 0);
        model.fit();
      }
      else if (choice == 4)
      {
        EXPECT_TRUE(table.shrinkTable());
        if (model.depth == 0 && model.tooFew(model.buckets))
          model.buckets /= 2;
      }
      else if (choice == 5 && step % 20 == 0)
      {
        table.reinitializeTable();
        model.keys.clear();
        model.buckets = model.depth ? model.buckets : model.least;
      }
      else if (random() % 100 < bias)
      {
        EXPECT_TRUE(table.insert(key));
        model.add(key);
      }
      else if (Entry* entry = table.find(key))
      {
        table.unlinkEntry(entry);
        ASSERT_TRUE(model.keys.count(key));
        model.keys.erase(model.keys.find(key));
      }
      ASSERT_TRUE(table.validate());
      ASSERT_EQ(table.bucketCount(), model.buckets);
      ASSERT_EQ(table.entryCount(), model.keys.size());
      ASSERT_EQ(table.find(key) != nullptr, model.keys.count(key) > 0);
    }
    std::vector<int> keys = table.keys();
    std::sort(keys.begin(), keys.end());
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), model.keys.begin(), model.keys.end()));
  }
}

TEST(TptrHashTable, findsEachAddress)
{
  // Addresses a power of two apart, as allocators give them, must spread over the buckets all the same.
  for (int shift = 3; shift < (sizeof(void*) > 4 ? 32 : 20); ++shift)
  {
    constexpr std::size_t kCount = 4000;
    TptrHashTable table;
    std::vector<TptrHashTableEntry> entries(kCount);
    std::set<TuInt32> buckets;
    const auto key = [shift](std::size_t i) { return reinterpret_cast<char*>((i + 1) << shift); };
    for (std::size_t i = 0; i < kCount; ++i)
      table.insert(&entries[i], key(i));
    for (const TptrHashTableEntry& each : table)
      buckets.insert(ThashTable::tableIndex(table.bucketCount(), each.fHash));
    EXPECT_GT(buckets.size(), kCount * 3 / 4) << shift;
    for (std::size_t i = 0; i < kCount; ++i)
    {
      EXPECT_EQ(table.find(key(i)), &entries[i]);
      EXPECT_EQ(table.find(key(i) + 1), nullptr);
      EXPECT_EQ(table.remove(key(i)), &entries[i]);
      EXPECT_EQ(table.remove(key(i)), nullptr);
    }
    EXPECT_EQ(table.bucketCount(), 8U); // given back on the way
    EXPECT_TRUE(table.validate());
  }
}

#ifdef CAN_REFUSE_MEMORY
TEST(ThashTable, livesWithoutMemory)
{
  failEveryAllocation([](int first, bool onwards) {
    std::vector<TptrHashTableEntry> entries(200);
    const Shortage shortage(first, onwards);
    try
    {
      TptrHashTable table(8, 256);
      for (TptrHashTableEntry& entry : entries)
      {
        table.insert(&entry, &entry);
        if (&entry == &entries[20])
        {
          const bool locked = table.lockSize();
          const bool unlocked = table.unlockSize();
          EXPECT_EQ(unlocked, locked && table.entryCount() <= table.bucketCount() * 3 / 8);
        }
        EXPECT_TRUE(table.validate() && table.find(&entry) == &entry);
      }
      for (TptrHashTableEntry& entry : entries)
        EXPECT_TRUE(table.remove(&entry) == &entry && table.validate());
    }
    catch (const TmemoryException&)
    {
      EXPECT_EQ(first, 0); // the first buckets
    }
    return Shortage::struck();
  });

  Table table(8, 1024);
  for (int i = 0; i < 200; ++i)
    table.insert(i);
  const std::vector<int> keys = table.keys();
  const TuInt32 buckets = table.bucketCount();
  {
    const Shortage shortage(0, true);
    EXPECT_FALSE(table.setTableSize(2048));
  }
  EXPECT_EQ(table.keys(), keys);
  const Shortage shortage(0, true);
  table.reinitializeTable();
  EXPECT_EQ(table.bucketCount(), buckets);
  EXPECT_TRUE(table.validate() && table.entryCount() == 0);
}
#endif

} // namespace
