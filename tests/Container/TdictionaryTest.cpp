#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Platform/Random.h"
#include "tests/Faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <vector>

namespace {

int gAlive = 0; // clones

class Node : public TdictionaryNode
{
public:
  Node(int key, int value)
    : fKey(key)
    , fValue(value)
  {
  }
  int compare(TdictionaryNode& other) override
  {
    const int key = static_cast<Node&>(other).fKey;
    return fKey < key ? -1 : fKey > key;
  }
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
    this->~Node();
    std::free(this);
  }
  TdictionaryNode*& forward(long i) override { return reinterpret_cast<TdictionaryNode**>(this + 1)[i]; }

  int fKey;
  int fValue;
  long fLevel = 0;
};

class Dictionary : public Tdictionary
{
public:
  Node* insert(int key, int value)
  {
    Node node(key, value);
    return static_cast<Node*>(insertNode(node));
  }
  Node* insert(int key, int value, Tbookmark& bookmark)
  {
    Node node(key, value);
    return static_cast<Node*>(insertNode(node, bookmark));
  }
  Node* find(int key)
  {
    Node node(key, 0);
    return static_cast<Node*>(searchNode(node));
  }
  Node* find(int key, Tbookmark& bookmark)
  {
    Node node(key, 0);
    return static_cast<Node*>(searchNode(node, bookmark));
  }
  bool remove(int key)
  {
    Node node(key, 0);
    return removeNode(node);
  }
  TnodeIterator<Node> begin() { return TnodeIterator<Node>(forward(0)); }
  TnodeIterator<Node> end() { return TnodeIterator<Node>(); }

  long levels() // in use
  {
    long level = 0;
    while (level < Tbookmark::kLevels && forward(level))
      ++level;
    return level;
  }
};

std::vector<std::pair<int, int>> contents(Dictionary& dictionary)
{
  std::vector<std::pair<int, int>> found;
  for (const Node& each : dictionary)
    found.emplace_back(each.fKey, each.fValue);
  return found;
}

TEST(Tdictionary, drawsTheSameLevelsEverywhere)
{
  Platform::Random one(1);
  for (const TuInt32 number : {1804289383U, 846930886U, 1681692777U, 1714636915U, 1957747793U, 424238335U})
    EXPECT_EQ(one.next(), number);
#ifndef _WIN32
  srandom(1013904223);
  Platform::Random levels(1013904223);
  for (int i = 0; i < 1000; ++i)
    EXPECT_EQ(levels.next(), TuInt32(random()));
#endif
}

TEST(Tdictionary, risesByOneLevelAtATime)
{
  Dictionary dictionary;
  std::vector<int> counts(Tbookmark::kLevels + 1);
  constexpr int kCount = 40000;
  for (int i = 0; i < kCount; ++i)
  {
    const long before = dictionary.levels();
    const long level = dictionary.insert(i, i)->fLevel;
    ASSERT_TRUE(level >= 1 && level <= before + 1);
    ++counts[std::size_t(level)];
  }
  for (int level = 1, rest = kCount; rest > 1000; ++level)
  {
    EXPECT_NEAR(counts[std::size_t(level)], rest * 0.75, rest * 0.03) << level;
    rest -= counts[std::size_t(level)];
  }
  EXPECT_GE(dictionary.levels(), 7); // 4 to the power of 7 is less than half the count
  EXPECT_TRUE(dictionary.validate());
  for (long level = dictionary.levels(); level > 0; --level)
  {
    while (dictionary.forward(level - 1)) // the last of them lowers the level
      EXPECT_TRUE(dictionary.remove(static_cast<Node*>(dictionary.forward(level - 1))->fKey));
    EXPECT_EQ(dictionary.levels(), level - 1);
    EXPECT_TRUE(dictionary.validate());
  }
  EXPECT_EQ(gAlive, 0);
}

TEST(Tdictionary, followsItsModel)
{
  std::mt19937 random(2);
  const auto newestFirst = [](std::multimap<int, int>& model, int key, int value) {
    model.emplace_hint(model.lower_bound(key), key, value);
  };
  for (const int range : {1, 5, 300})
  {
    Dictionary dictionary;
    std::multimap<int, int> model;
    for (int step = 0; step < 1500; ++step)
    {
      const int key = int(random() % unsigned(range));
      const auto place = model.lower_bound(key);
      const bool known = place != model.end() && place->first == key;
      const unsigned choice = unsigned(random() % 8);
      Tbookmark bookmark;
      if (choice < 3)
      {
        ASSERT_EQ(dictionary.remove(key), known);
        if (known)
          model.erase(place);
      }
      else if (choice < 5)
      {
        ASSERT_NE(dictionary.insert(key, step), nullptr);
        newestFirst(model, key, step);
      }
      else if (choice < 7) // through a bookmark, filled (also by the empty dictionary) or leading nowhere
      {
        Node* found = choice == 5 ? dictionary.find(key, bookmark) : dictionary.find(key);
        ASSERT_EQ(found != nullptr, known);
        ASSERT_TRUE(!known || found->fValue == place->second);
        ASSERT_NE(dictionary.insert(key, step, bookmark), nullptr);
        newestFirst(model, key, step);
      }
      else if (step % 500 == 7)
      {
        dictionary.reset();
        model.clear();
      }
      ASSERT_TRUE(dictionary.validate());
      ASSERT_EQ(gAlive, int(model.size()));
      ASSERT_TRUE(std::ranges::equal(contents(dictionary), model, [](const auto& found, const auto& wanted) {
        return found.first == wanted.first && found.second == wanted.second;
      }));
    }
  }
  EXPECT_EQ(gAlive, 0);
}

TEST(Tdictionary, sharesItsNodesWithCopies)
{
  Dictionary dictionary;
  for (int i = 0; i < 100; ++i)
    dictionary.insert(i, i);
  Dictionary assigned;
  assigned = dictionary;
  {
    Dictionary copy(dictionary);
    EXPECT_EQ(copy.find(50), dictionary.find(50));
    EXPECT_EQ(assigned.find(50), dictionary.find(50));
    EXPECT_TRUE(copy.validate());
  }
  EXPECT_EQ(gAlive, 0);
  for (Dictionary* dangling : {&dictionary, &assigned})
    new (dangling) Dictionary; // forgets what the copy has destroyed
}

TEST(Tdictionary, noticesBrokenLists)
{
  Dictionary dictionary;
  while (dictionary.levels() < 3)
    dictionary.insert(int(std::distance(dictionary.begin(), dictionary.end())), 0);
  const auto breaks = [&](TdictionaryNode*& link, TdictionaryNode* value) {
    TdictionaryNode* const before = link;
    link = value;
    const bool noticed = !dictionary.validate();
    link = before;
    return noticed && dictionary.validate();
  };
  Node* first = &*dictionary.begin();
  Node* last = first;
  while (last->forward(0))
    last = static_cast<Node*>(last->forward(0));
  EXPECT_TRUE(breaks(last->forward(0), first));
  EXPECT_TRUE(breaks(last->forward(0), last));
  EXPECT_TRUE(breaks(first->forward(0), last));
  EXPECT_TRUE(breaks(dictionary.forward(2), nullptr));
  EXPECT_TRUE(breaks(dictionary.forward(3), dictionary.forward(2)));
  Node* const high = static_cast<Node*>(dictionary.forward(2));
  const int key = high->fKey;
  if (high->forward(0))
  {
    high->fKey = last->fKey + 1;
    EXPECT_FALSE(dictionary.validate());
    high->fKey = key;
  }
}

#ifdef CAN_REFUSE_MEMORY
TEST(Tdictionary, livesWithoutMemory)
{
  failEveryAllocation([](int first, bool onwards) {
    Dictionary dictionary;
    int count = 0;
    const Shortage shortage(first, onwards);
    for (int i = 0; i < 50; ++i)
    {
      Tbookmark bookmark;
      EXPECT_EQ(dictionary.find(i % 7 * 10 + i, bookmark), nullptr);
      count += dictionary.insert(i % 7 * 10 + i, i, bookmark) != nullptr;
      EXPECT_TRUE(dictionary.validate());
    }
    EXPECT_EQ(count, gAlive);
    return Shortage::struck();
  });
}
#endif

} // namespace
