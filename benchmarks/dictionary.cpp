// The ordered dictionary beside its peers. It looks a key up before it inserts it, as they do, and inserts at the
// bookmark of that search.

#include "Foundation/Container/Tdictionary.h"
#include "benchmarks/Keyed.h"

#include <QMap>
#include <absl/container/btree_map.h>
#include <algorithm>
#include <map>
#include <new>

namespace {

class Node final : public TdictionaryNode
{
public:
  Node(std::uint64_t key, std::uint64_t value)
    : fKey(key)
    , fValue(value)
  {
  }
  int compare(TdictionaryNode& other) override
  {
    const std::uint64_t key = static_cast<Node&>(other).fKey;
    return fKey < key ? -1 : fKey > key;
  }
  void setValue(TdictionaryNode& other) override { fValue = static_cast<Node&>(other).fValue; }
  TdictionaryNode* clone(long level) override
  {
    void* block = std::malloc(sizeof(Node) + std::size_t(level) * sizeof(TdictionaryNode*));
    if (!block)
      return nullptr;
    Node* made = new (block) Node(fKey, fValue);
    std::fill_n(&made->forward(0), level, nullptr);
    return made;
  }
  void destroy() override { std::free(this); }
  TdictionaryNode*& forward(long i) override { return reinterpret_cast<TdictionaryNode**>(this + 1)[i]; }

  std::uint64_t fKey;
  std::uint64_t fValue;
};

template <class Base>
class Dictionary : public Base
{
public:
  void insert(std::uint64_t key, std::uint64_t value)
  {
    Node node(key, value);
    Tbookmark bookmark;
    if (!this->searchNode(node, bookmark))
      this->insertNode(node, bookmark);
  }
  const std::uint64_t* find(std::uint64_t key) const
  {
    Node node(key, 0);
    const TdictionaryNode* found = const_cast<Dictionary*>(this)->searchNode(node);
    return found ? &static_cast<const Node*>(found)->fValue : nullptr;
  }
  std::uint64_t sum() const
  {
    std::uint64_t total = 0;
    for (const auto& each : *this)
      total += static_cast<const Node&>(each).fValue;
    return total;
  }
};

template <class Map>
class Peer
{
public:
  void insert(std::uint64_t key, std::uint64_t value) { fMap.emplace(key, value); }
  const std::uint64_t* find(std::uint64_t key) const
  {
    const auto found = fMap.find(key);
    return found == fMap.end() ? nullptr : &found->second;
  }
  std::uint64_t sum() const
  {
    std::uint64_t total = 0;
    for (const auto& each : fMap)
      total += each.second;
    return total;
  }

private:
  Map fMap;
};

class QtPeer
{
public:
  void insert(std::uint64_t key, std::uint64_t value) { fMap.insert(key, value); }
  const std::uint64_t* find(std::uint64_t key) const
  {
    const auto found = fMap.constFind(key);
    return found == fMap.constEnd() ? nullptr : &*found;
  }
  std::uint64_t sum() const
  {
    std::uint64_t total = 0;
    for (const std::uint64_t each : fMap)
      total += each;
    return total;
  }

private:
  QMap<std::uint64_t, std::uint64_t> fMap;
};

} // namespace

int main(int argc, char** argv)
{
  std::vector<Case> cases;
  std::vector<Aim> aims;
  for (const std::size_t size : {1000U, 30000U, 1000000U})
  {
    const auto keys = std::make_shared<Keys<std::uint64_t>>(size, [](std::uint64_t number) { return number; });
    addKeyed<Dictionary<Tdictionary>, true>(cases, "numbers", "Tdictionary", true, keys);
    addKeyed<Dictionary<TdictionaryOf<Node>>, true>(cases, "numbers", "TdictionaryOf", true, keys);
    addKeyed<Peer<std::map<std::uint64_t, std::uint64_t>>, true>(cases, "numbers", "std", false, keys);
    addKeyed<QtPeer, true>(cases, "numbers", "QMap", false, keys);
    addKeyed<Peer<absl::btree_map<std::uint64_t, std::uint64_t>>, true>(cases, "numbers", "absl", false, keys);
  }
  for (const Case& each : cases)
  {
    if (each.ours && each.table.find("insert") == std::string::npos)
      aims.push_back({each.table, each.name, "std", 1});
  }
  return runRatios(argc, argv, cases, aims);
}
