#include "Foundation/Container/TtypedDictionary.h"
#include "Foundation/Platform/Random.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <utility>

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

template <class Base>
struct DictionaryOn : Base
{
  template <class... Bookmark>
  Node* insert(int key, int value, Bookmark&... bookmark)
  {
    Node node(key, value);
    return static_cast<Node*>(this->insertNode(node, bookmark...));
  }
  template <class... Bookmark>
  Node* find(int key, Bookmark&... bookmark)
  {
    Node node(key, 0);
    return static_cast<Node*>(this->searchNode(node, bookmark...));
  }
  bool remove(int key)
  {
    Node node(key, 0);
    return this->removeNode(node);
  }
  long levels() // in use
  {
    long level = 0;
    while (level < Tbookmark::kLevels && this->forward(level))
      ++level;
    return level;
  }
};
using Dictionary = DictionaryOn<TdictionaryOf<Node>>;

static_assert(std::forward_iterator<Dictionary::iterator> && std::forward_iterator<Tdictionary::const_iterator>);
static_assert(std::is_convertible_v<Dictionary::iterator, Dictionary::const_iterator>);
static_assert(!std::is_convertible_v<Dictionary::const_iterator, Dictionary::iterator>);

TEST(Tdictionary, drawsTheSameLevelsEverywhere)
{
  Platform::Random one(1);
  EXPECT_EQ(one.next(), 1804289383U);
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

template <class Base>
void followModel()
{
  std::mt19937 random(2);
  for (const int range : {1, 5, 300})
  {
    DictionaryOn<Base> dictionary;
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
      for (const auto& each : std::as_const(dictionary))
        ASSERT_EQ(static_cast<const Node&>(each).fValue, wanted++->second);
      ASSERT_EQ(wanted, model.end());
    }
  }
  EXPECT_EQ(gAlive, 0);
}

TEST(Tdictionary, followsItsModel)
{
  followModel<Tdictionary>();
  followModel<TdictionaryOf<Node>>();
}

TEST(Tdictionary, knowsWhatItsRulesAre)
{
  Dictionary dictionary;
  for (int i = 0; i < 100; ++i)
    dictionary.insert(i, i);
  Node& first = *dictionary.begin();
  Node& last = *std::next(dictionary.begin(), 99);
  const auto broken = [&](auto& place, auto value) {
    std::swap(place, value);
    const bool valid = dictionary.validate();
    std::swap(place, value);
    return !valid && dictionary.validate();
  };
  EXPECT_TRUE(broken(first.fKey, 2));
  EXPECT_TRUE(broken(last.forward(0), static_cast<TdictionaryNode*>(&first)));
  TdictionaryNode* high = dictionary.forward(1);
  TdictionaryNode* before = &dictionary;
  while (before->forward(0) != high)
    before = before->forward(0);
  EXPECT_TRUE(broken(before->forward(0), high->forward(0))); // not on all its levels
  EXPECT_TRUE(broken(dictionary.forward(dictionary.levels() - 1), static_cast<TdictionaryNode*>(nullptr)));
}

struct Failing // when a node is made of it
{
  Failing() = default;
  Failing(const Failing& other)
    : fCopies(other.fCopies + 1)
  {
    if (fCopies == 2)
      throw std::bad_alloc();
  }
  Failing& operator=(const Failing&) = default;
  int fCopies = 0;
};

struct FailingNode final : TtypedNode<FailingNode, int, Failing>
{
  using TtypedNode::TtypedNode;
  static int order(int left, int right) { return left - right; }
};

TEST(TtypedDictionary, passesOnWhatAValueThrows)
{
  TtypedDictionary<FailingNode> dictionary; // the block of the node is AddressSanitizer's to miss
  EXPECT_THROW(dictionary.insert(1, Failing()), std::bad_alloc);
  EXPECT_TRUE(dictionary.validate() && !dictionary.findNode(1));
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
