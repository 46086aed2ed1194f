/// \file
/// Tdictionary: an ordered dictionary, under those of names and types.
///
/// Derive from it, and from TdictionaryNode, to make a dictionary that is kept in the order of its keys; a ThashTable
/// is faster where no order is needed. It is a skip list: look-up, insertion and removal visit a number of nodes that
/// grows with the logarithm of the length, nodes never move, and a node is one block. The trap: a copied dictionary
/// shares the nodes of the original, and the first of the two to be emptied or destroyed frees them.

#pragma once

#include "Foundation/Platform/Export.h"

#include <cstddef>
#include <iterator>

class Tmetaclass;

/// A key and its value in a dictionary, and the links to the nodes behind it: one for each level that the node is on.
///
/// \code
///   node        level 1: o---------------->o------>o
///   of level 2  level 0: o-->o-->o-->o---->o-->o-->o
/// \endcode
class FOUNDATION_API TdictionaryNode
{
public:
  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  virtual ~TdictionaryNode();

  /// Negative when this node's key comes before \p other's, 0 when they are equal, positive when it comes after.
  virtual int compare(TdictionaryNode& other) = 0;

  /// Copies the value of \p other.
  virtual void setValue(TdictionaryNode& other) = 0;

  /// A new node with the same key and value and with \p level links, all null; null when there is no memory. destroy()
  /// releases it.
  virtual TdictionaryNode* clone(long level) = 0;

  /// Destructs and frees this node.
  virtual void destroy() = 0;

  /// The link to the next node on level \p i, counted from 0 and below the node's number of levels. A node's links
  /// stand one behind the other: &forward(i) is &forward(0) + i.
  virtual TdictionaryNode*& forward(long i) = 0;

  /// What the creator of \p type makes, when \p type is this class or derives from it; otherwise, and since nodes have
  /// no creators, null.
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  TdictionaryNode() = default;
  TdictionaryNode(const TdictionaryNode&) = default;
  TdictionaryNode& operator=(const TdictionaryNode&) = default;
};

/// Where a look-up came past: on each level the last node before the key. It serves to insert there without another
/// search, as long as the dictionary has not changed otherwise.
class FOUNDATION_API Tbookmark
{
public:
  static constexpr int kLevels = 16;

  /// Leads nowhere: all null.
  Tbookmark() = default;

  TdictionaryNode*& operator[](long i) noexcept { return fPath[i]; }

private:
  TdictionaryNode* fPath[kLevels] = {};
};

/// A skip list of at most 16 levels, and itself the node at its head.
///
/// The functions that take a key take it as a node, which may live on the stack, needs no links and is never kept:
/// what enters the dictionary is a clone. Several nodes may have equal keys; the one inserted last is found first.
///
/// Levels are drawn from one generator for all dictionaries of the process, whose sequence is the same in every run and
/// on every platform: a node is on level i + 1 with a quarter of the probability of level i.
class FOUNDATION_API Tdictionary : public TdictionaryNode
{
public:
  Tdictionary() noexcept;

  /// Shares the nodes of \p other; the nodes held before are forgotten, not destroyed. Of dictionaries that share nodes
  /// only one may change, be reset or be destroyed with nodes in it.
  Tdictionary(const Tdictionary& other) noexcept;
  Tdictionary& operator=(const Tdictionary& other) noexcept;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  /// Destroys the nodes.
  ~Tdictionary() override;

  /// Destroys all nodes.
  void reset();

  /// Whether each level is in the order of the keys, holds only nodes of the level below, and is not empty. Linear.
  bool validate() const;

  /// The head's part in the list. A dictionary has no key or value and is not to be cloned: compare() is 0, clone()
  /// null, setValue() and destroy() do nothing.
  int compare(TdictionaryNode& other) override;
  void setValue(TdictionaryNode& other) override;
  TdictionaryNode* clone(long level) override;
  void destroy() override;
  TdictionaryNode*& forward(long i) override;

  /// Walks the nodes in the order of their keys, as `Node`. The node that it stands on must not be removed before the
  /// next step.
  template <class Node>
  class TnodeIterator
  {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Node;
    using difference_type = std::ptrdiff_t;
    using pointer = Node*;
    using reference = Node&;

    explicit TnodeIterator(TdictionaryNode* node = nullptr) noexcept
      : fNode(node)
    {
    }
    Node& operator*() const noexcept { return *static_cast<Node*>(fNode); }
    Node* operator->() const noexcept { return static_cast<Node*>(fNode); }
    TnodeIterator& operator++()
    {
      fNode = fNode->forward(0);
      return *this;
    }
    TnodeIterator operator++(int)
    {
      TnodeIterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const TnodeIterator& other) const noexcept { return fNode == other.fNode; }
    bool operator!=(const TnodeIterator& other) const noexcept { return fNode != other.fNode; }

  private:
    TdictionaryNode* fNode;
  };

  /// The nodes in order, for a range `for`. A derived dictionary hides these by ones that give its own node type.
  TnodeIterator<TdictionaryNode> begin() noexcept { return TnodeIterator<TdictionaryNode>(fLinks[0]); }
  TnodeIterator<TdictionaryNode> end() noexcept { return TnodeIterator<TdictionaryNode>(); }
  TnodeIterator<const TdictionaryNode> begin() const noexcept
  {
    return TnodeIterator<const TdictionaryNode>(fLinks[0]);
  }
  TnodeIterator<const TdictionaryNode> end() const noexcept { return TnodeIterator<const TdictionaryNode>(); }

protected:
  /// Draws the number of levels of a new node: 1 to 16, and at most one above the levels in use.
  long randomLevel() const;

  /// Puts a clone of \p key in its place, before nodes with an equal key, and returns it. Null, and nothing changed,
  /// when there was no memory for it.
  TdictionaryNode* insertNode(TdictionaryNode& key);

  /// The same at \p bookmark, which searchNode() filled for the same key; one that leads nowhere has the place
  /// searched.
  TdictionaryNode* insertNode(TdictionaryNode& key, Tbookmark& bookmark);

  /// The first node with an equal key; null when there is none. \p bookmark receives the way there, or to where the key
  /// would stand.
  TdictionaryNode* searchNode(TdictionaryNode& key);
  TdictionaryNode* searchNode(TdictionaryNode& key, Tbookmark& bookmark);

  /// Takes out and destroys the first node with an equal key. False when there is none.
  bool removeNode(TdictionaryNode& key);

private:
  TdictionaryNode* descend(TdictionaryNode& key, Tbookmark* bookmark, int& order);

  long fLevel = 0; // how many levels are in use, 0 to 16
  TdictionaryNode* fLinks[Tbookmark::kLevels] = {};
};

static_assert(sizeof(Tbookmark) == 16 * sizeof(void*), "a node for each level");
static_assert(sizeof(Tdictionary) == 18 * sizeof(void*), "a table of functions, the level and the links");
