/// \file
/// The typed face over Tdictionary: what gives the dictionaries of names and types their interface.
///
/// Derive a dictionary of your own in a few lines:
///
/// \code
///   class TlampNode final : public TtypedNode<TlampNode, Tstring, Tlamp*>
///   {
///   public:
///     using TtypedNode::TtypedNode;
///     static int order(const Tstring& left, const Tstring& right) { return left.compare(right); }
///   };
///   class TlampDictionary : public TtypedDictionary<TlampNode> {};
/// \endcode

#pragma once

#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Debug/Texception.h"

#include <cstdlib>
#include <new>
#include <utility>

/// A node that holds a key and a value; its links stand behind it in the same block. \p Node, the class itself, has a
/// static function `order` for two keys: negative, 0 or positive.
template <class Node, class Key, class Value>
class TtypedNode : public TdictionaryNode
{
public:
  using key_type = Key;
  using mapped_type = Value;

  explicit TtypedNode(Key key, const Value& value = Value())
    : fKey(std::move(key))
    , fValue(value)
  {
  }

  const Key& key() const noexcept { return fKey; }
  Value& data() noexcept { return fValue; }
  const Value& data() const noexcept { return fValue; }

  int compare(TdictionaryNode& other) override { return Node::order(fKey, static_cast<TtypedNode&>(other).fKey); }
  void setValue(TdictionaryNode& other) override { fValue = static_cast<TtypedNode&>(other).fValue; }

  TdictionaryNode* clone(long level) override
  {
    void* block = std::calloc(1, sizeof(Node) + static_cast<std::size_t>(level) * sizeof(TdictionaryNode*));
    if (!block)
      return nullptr;
    try
    {
      return new (block) Node(static_cast<const Node&>(*this)); // the links are null
    }
    catch (const TmemoryException&)
    {
      std::free(block);
      return nullptr;
    }
    catch (...)
    {
      std::free(block);
      throw;
    }
  }
  void destroy() override
  {
    Node* const node = static_cast<Node*>(this);
    node->~Node();
    std::free(node);
  }
  TdictionaryNode*& forward(long i) override
  {
    return reinterpret_cast<TdictionaryNode**>(static_cast<Node*>(this) + 1)[i];
  }

private:
  Key fKey;
  Value fValue;
};

/// A dictionary of \p Node, which derives from TtypedNode. Each function makes a node of the key on the stack.
template <class Node>
class TtypedDictionary : public TdictionaryOf<Node>
{
  using Key = typename Node::key_type;
  using Value = typename Node::mapped_type;

public:
  /// Adds a node before those with an equal key, and returns it; search first where keys are to be unique. \p bookmark,
  /// which a search for the same key filled, saves another. Throws TmemoryException, with nothing changed, when there
  /// is no memory.
  Node* insert(const Key& key, const Value& value)
  {
    Tbookmark none;
    return insert(key, value, none);
  }
  Node* insert(const Key& key, const Value& value, Tbookmark& bookmark)
  {
    Node node(key, value);
    Node* const inserted = this->insertNode(node, bookmark);
    if (!inserted)
      throw TmemoryException();
    return inserted;
  }

  /// Takes out and destroys the first node with an equal key. False when there is none.
  bool remove(const Key& key)
  {
    Node node(key);
    return this->removeNode(node);
  }

  /// The first node with an equal key; null when there is none. \p bookmark receives the way there, or to where it
  /// would stand.
  Node* findNode(const Key& key)
  {
    Node node(key);
    return this->searchNode(node);
  }
  Node* findNode(const Key& key, Tbookmark& bookmark)
  {
    Node node(key);
    return this->searchNode(node, bookmark);
  }
  const Node* findNode(const Key& key) const { return const_cast<TtypedDictionary*>(this)->findNode(key); }

  /// The same, with the node's value in the place of the node.
  Value* search(const Key& key) { return valueOf(findNode(key)); }
  Value* search(const Key& key, Tbookmark& bookmark) { return valueOf(findNode(key, bookmark)); }
  const Value* search(const Key& key) const { return valueOf(findNode(key)); }

  /// The node with the least key, and the one behind \p node; null when there is none.
  Node* first() noexcept { return static_cast<Node*>(this->forward(0)); }
  static Node* next(Node* node) noexcept { return static_cast<Node*>(node->forward(0)); }

private:
  template <class Any>
  static auto valueOf(Any* node) noexcept -> decltype(&node->data())
  {
    return node ? &node->data() : nullptr;
  }
};
