/// \file
/// The typed faces over Tdictionary: what gives the dictionaries of types and names their interface.
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

#include <cstdlib>
#include <new>

/// A node that holds a key and a value; its links stand behind it in the same block. \p Node, the class itself, has a
/// static function `order` for two keys: negative, 0 or positive.
template <class Node, class Key, class Value>
class TtypedNode : public TdictionaryNode
{
public:
  using key_type = Key;
  using mapped_type = Value;

  explicit TtypedNode(const Key& key, const Value& value = Value())
    : fKey(key)
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
    const std::size_t count = static_cast<std::size_t>(level);
    void* block = std::calloc(1, sizeof(Node) + count * sizeof(TdictionaryNode*));
    return block ? new (block) Node(static_cast<const Node&>(*this)) : nullptr;
  }
  void destroy() override
  {
    static_cast<Node*>(this)->~Node();
    std::free(static_cast<Node*>(this));
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
class TtypedDictionary : public Tdictionary
{
  using Key = typename Node::key_type;
  using Value = typename Node::mapped_type;

public:
  /// Adds a node before those with an equal key. Search first where keys are to be unique, and hand on the bookmark of
  /// that search. Null, and nothing changed, when there is no memory.
  Node* insert(const Key& key, const Value& value)
  {
    Node node(key, value);
    return static_cast<Node*>(insertNode(node));
  }
  Node* insert(const Key& key, const Value& value, Tbookmark& bookmark)
  {
    Node node(key, value);
    return static_cast<Node*>(insertNode(node, bookmark));
  }

  /// Removes the first node with an equal key. False when there is none.
  bool remove(const Key& key)
  {
    Node node(key);
    return removeNode(node);
  }

  /// The first node with an equal key, or its value; null when there is none. \p bookmark receives the way to where the
  /// key stands or would stand.
  Node* findNode(const Key& key)
  {
    Node node(key);
    return static_cast<Node*>(searchNode(node));
  }
  Node* findNode(const Key& key, Tbookmark& bookmark)
  {
    Node node(key);
    return static_cast<Node*>(searchNode(node, bookmark));
  }
  Value* search(const Key& key) { return valueOf(findNode(key)); }
  Value* search(const Key& key, Tbookmark& bookmark) { return valueOf(findNode(key, bookmark)); }

  /// The nodes in order, null behind the last.
  Node* first() noexcept { return static_cast<Node*>(forward(0)); }
  static Node* next(Node* node) noexcept { return static_cast<Node*>(node->forward(0)); }

  TnodeIterator<Node> begin() noexcept { return TnodeIterator<Node>(forward(0)); }
  TnodeIterator<Node> end() noexcept { return TnodeIterator<Node>(); }
  TnodeIterator<const Node> begin() const noexcept
  {
    return TnodeIterator<const Node>(const_cast<TtypedDictionary*>(this)->forward(0));
  }
  TnodeIterator<const Node> end() const noexcept { return TnodeIterator<const Node>(); }

private:
  static Value* valueOf(Node* node) noexcept { return node ? &node->data() : nullptr; }
};
