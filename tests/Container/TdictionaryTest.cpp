#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Platform/Random.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <new>
#include <random>

namespace {

int gAlive = 0; // clones

struct Node : TdictionaryNode
{
  Node(int key, int value)
    : fKey(key)
    , fValue(value)
  {
  }
  int compare(TdictionaryNode& other) override { return fKey - static_cast<Node&>(other).fKey; }
  void setValue(TdictionaryNode& other) override { fValue = static_cast<Node&>(other).fValue; }
  TdictionaryNode* clone(long level) override
  {
    void* block = std::malloc(sizeof(Node) + std::size_t(level) * sizeof(TdictionaryNode*));
    if (!block)
      return nullptr;
    Node* made = new (block) Node(fKey, fValue);
    made->fLevel = level;
    std::fill_n(&made->forward(0), level, nullptr);
    ++gAlive;
    return made;
  }
  void destroy() override
  {
    --gAlive;
    std::free(this);
  }
  TdictionaryNode*& forward(long i) override { return reinterpret_cast<TdictionaryNode**>(this + 1)[i]; }

  int fKey;
  int fValue;
  long fLevel = 0;
};

struct Dictionary : Tdictionary
{
  template <class... Bookmark>
  Node* insert(int key, int value, Bookmark&... bookmark)
  {
    Node node(key, value);
    return static_cast<Node*>(insertNode(node, bookmark...));
  }
  template <class... Bookmark>
  Node* find(int key, Bookmark&... bookmark)
  {
    Node node(key, 0);
    return static_cast<Node*>(searchNode(node, bookmark...));
  }
  bool remove(int key)
  {
    Node node(key, 0);
    return removeNode(node);
  }
  long levels() // in use
  {
    long level = 0;
    while (level < Tbookmark::kLevels && forward(level))
      ++level;
    return level;
  }
};

TEST(Tdictionary, drawsTheSameLevelsEverywhere)
{
  Platform::Random one(1);
  for (const TuInt32 number : {1804289383U, 846930886U, 1681692777U, 1714636915U, 1957747793U, 424238335U})
    EXPECT_EQ(one.next(), number);
#ifdef __linux__
  srandom(1013904223);
  Platform::Random levels(1013904223);
  for (int i = 0; i < 1000; ++i)
    EXPECT_EQ(levels.next(), TuInt32(random()));
#endif
}

TEST(Tdictionary, risesByOneLevelAtATime)
{
  Dictionary dictionary;
  int counts[Tbookmark::kLevels + 1] = {};
  for (int i = 0; i < 40000; ++i)
  {
    const long before = dictionary.levels();
    const long level = dictionary.insert(i, i)->fLevel;
    ASSERT_TRUE(level >= 1 && level <= before + 1);
    ++counts[level];
  }
  for (int level = 1, rest = 40000; rest > 1000; rest -= counts[level++])
    EXPECT_NEAR(counts[level], rest * 0.75, rest * 0.03) << level;
  for (long level = dictionary.levels(); level > 0; --level)
  {
    while (TdictionaryNode* top = dictionary.forward(level - 1)) // the last of them lowers the level
      EXPECT_TRUE(dictionary.remove(static_cast<Node*>(top)->fKey));
    EXPECT_EQ(dictionary.levels(), level - 1);
    EXPECT_TRUE(dictionary.validate());
  }
}

TEST(Tdictionary, followsItsModel)
{
  std::mt19937 random(2);
  for (const int range : {1, 5, 300})
  {
    Dictionary dictionary;
    std::multimap<int, int> model; // the newest first among equals
    for (int step = 0; step < 1500; ++step)
    {
      const int key = int(random() % unsigned(range));
      const auto place = model.lower_bound(key);
      const bool known = place != model.end() && place->first == key;
      const unsigned choice = unsigned(random() % 8);
      Tbookmark bookmark; // filled, also by an empty dictionary, or leading nowhere
      Node* found = choice < 6 ? dictionary.find(key, bookmark) : dictionary.find(key);
      ASSERT_TRUE(known ? found && found->fValue == place->second : !found);
      if (choice < 4)
      {
        ASSERT_EQ(dictionary.remove(key), known);
        if (known)
          model.erase(place);
      }
      else
      {
        ASSERT_TRUE(choice % 2 ? dictionary.insert(key, step) : dictionary.insert(key, step, bookmark));
        model.emplace_hint(place, key, step);
      }
      if (step % 500 == 0)
      {
        dictionary.reset();
        model.clear();
      }
      ASSERT_TRUE(dictionary.validate());
      ASSERT_EQ(gAlive, int(model.size()));
      auto wanted = model.begin();
      for (TdictionaryNode& each : dictionary)
        ASSERT_EQ(static_cast<Node&>(each).fValue, wanted++->second);
    }
  }
  EXPECT_EQ(gAlive, 0);
}

#if FAILING_MEMORY
TEST(Tdictionary, livesWithoutMemory)
{
  forEachFailingAllocation([] {
    Dictionary dictionary;
    int count = 0;
    for (int i = 0; i < 50; ++i)
    {
      count += dictionary.insert(i * 29 % 50, i) != nullptr;
      EXPECT_TRUE(dictionary.validate());
    }
    EXPECT_EQ(count, gAlive);
  });
}
#endif

} // namespace
