#include "Foundation/Container/Tdictionary.h"

#include "Foundation/Platform/Random.h"

#include <algorithm>

namespace {

Platform::Random& generator()
{
  static Platform::Random random(1013904223);
  return random;
}

constexpr TuInt32 kRise = 0x20000000; // a quarter of what is drawn lies below

} // namespace

TdictionaryNode::~TdictionaryNode() = default;

Tdictionary::Tdictionary() noexcept = default;

Tdictionary::Tdictionary(const Tdictionary& other) noexcept = default;
Tdictionary& Tdictionary::operator=(const Tdictionary& other) noexcept = default;

Tdictionary::~Tdictionary()
{
  reset();
}

void Tdictionary::reset()
{
  TdictionaryNode* node = fLinks[0];
  fLevel = 0;
  std::fill(std::begin(fLinks), std::end(fLinks), nullptr);
  while (node)
  {
    TdictionaryNode* next = node->forward(0);
    node->destroy();
    node = next;
  }
}

bool Tdictionary::validate() const
{
  if (fLevel < 0 || fLevel > Tbookmark::kLevels)
    return false;
  // A node that the walk meets again closes a circle; it is compared with one that stays behind ever longer.
  TdictionaryNode* behind = nullptr;
  std::size_t steps = 0;
  for (TdictionaryNode* node = fLinks[0]; node; node = node->forward(0))
  {
    TdictionaryNode* next = node->forward(0);
    if (node == behind || (next && node->compare(*next) > 0))
      return false;
    if ((steps & (steps - 1)) == 0)
      behind = node;
    ++steps;
  }
  for (long level = 1; level < fLevel; ++level)
  {
    TdictionaryNode* below = fLinks[level - 1];
    for (TdictionaryNode* node = fLinks[level]; node; node = node->forward(level))
    {
      while (below && below != node)
        below = below->forward(level - 1);
      if (!below)
        return false;
      below = below->forward(level - 1);
    }
  }
  return std::all_of(fLinks, fLinks + fLevel, [](TdictionaryNode* first) { return first != nullptr; }) &&
         std::all_of(fLinks + fLevel, std::end(fLinks), [](TdictionaryNode* first) { return first == nullptr; });
}

int Tdictionary::compare(TdictionaryNode&)
{
  return 0;
}

void Tdictionary::setValue(TdictionaryNode&) {}

TdictionaryNode* Tdictionary::clone(long)
{
  return nullptr;
}

void Tdictionary::destroy() {}

TdictionaryNode*& Tdictionary::forward(long i)
{
  return fLinks[i];
}

long Tdictionary::randomLevel() const
{
  long level = 1;
  for (TuInt32 draw = generator().next(); draw < kRise && level <= fLevel; draw = generator().next())
    ++level;
  return std::min<long>(level, Tbookmark::kLevels);
}

TdictionaryNode* Tdictionary::insertNode(TdictionaryNode& key)
{
  Tbookmark path;
  descend<TdictionaryNode>(key, &path);
  return insertNode(key, path);
}

TdictionaryNode* Tdictionary::insertNode(TdictionaryNode& key, Tbookmark& bookmark)
{
  if (!bookmark[0])
    return insertNode(key);
  const long level = randomLevel();
  TdictionaryNode* node = key.clone(level);
  if (!node)
    return nullptr;
  for (; fLevel < level; ++fLevel)
    bookmark[fLevel] = this;
  TdictionaryNode** links = &node->forward(0);
  for (long i = 0; i < level; ++i)
  {
    TdictionaryNode*& link = bookmark[i]->forward(i);
    links[i] = link;
    link = node;
  }
  return node;
}

TdictionaryNode* Tdictionary::searchNode(TdictionaryNode& key)
{
  return descend<TdictionaryNode>(key, nullptr);
}

TdictionaryNode* Tdictionary::searchNode(TdictionaryNode& key, Tbookmark& bookmark)
{
  return descend<TdictionaryNode>(key, &bookmark);
}

bool Tdictionary::removeNode(TdictionaryNode& key)
{
  Tbookmark path;
  return unlinkNode(descend<TdictionaryNode>(key, &path), path);
}

// Takes out and destroys the node at the end of the path, if there is one.
bool Tdictionary::unlinkNode(TdictionaryNode* node, Tbookmark& path)
{
  if (!node)
    return false;
  for (long i = 0; i < fLevel; ++i)
  {
    TdictionaryNode*& link = path[i]->forward(i);
    if (link == node)
      link = node->forward(i);
  }
  while (fLevel > 0 && !fLinks[fLevel - 1])
    --fLevel;
  node->destroy();
  return true;
}
