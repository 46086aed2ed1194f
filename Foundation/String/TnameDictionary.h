/// \file
/// TnameDictionary: names in the order in which people number things, with what is known of each.
///
/// Tname::nameTable() is the one of all interned names. Others may be made: each keeps a count and a list of objects
/// under each name and leaves it to its owner what they mean. Costs and traps are those of Tdictionary.

#pragma once

#include "Foundation/Container/Tdictionary.h"
#include "Foundation/String/TnameString.h"

class TnameObject;

/// The value that belongs to a name: how many hold it, and the objects that bear it, the one added last first. A copy
/// has a list of its own, of the same objects.
class FOUNDATION_API TnameInfo
{
public:
  struct Tcell
  {
    TnameObject* fObject;
    Tcell* fNext;
  };

  TnameInfo() noexcept = default;

  /// Throw TmemoryException when there is no memory for the list; then nothing is changed.
  TnameInfo(const TnameInfo& other);
  TnameInfo& operator=(const TnameInfo& other);

  ~TnameInfo();

  /// The number of Tname that hold the name.
  Tint32 count() const noexcept { return fCount; }

  /// The first cell of the list, null when there is none.
  const Tcell* objects() const noexcept { return fObjects; }

  /// Puts \p object, which is borrowed, at the head of the list. Throws TmemoryException, with nothing changed, when
  /// there is no memory for a cell.
  void addObject(TnameObject* object);

  /// Takes the cell of \p object that was added last out of the list; nothing happens when there is none. Linear.
  void removeObject(TnameObject* object) noexcept;

private:
  friend class Tname;

  static Tcell* newCell(TnameObject* object);
  void removeCell(Tcell** link) noexcept;

  Tint32 fCount = 0;
  Tcell* fObjects = nullptr;
};

/// A name and its value in a dictionary. The links follow the object in the same block.
class FOUNDATION_API TnameDictionaryNode : public TdictionaryNode
{
public:
  TnameDictionaryNode(TnameString key, const TnameInfo& data)
    : fKey(std::move(key))
    , fData(data)
  {
  }

  const TnameString& key() const noexcept { return fKey; }
  TnameInfo& data() noexcept { return fData; }
  const TnameInfo& data() const noexcept { return fData; }

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  /// -1, 0 or 1, by the order of the keys.
  int compare(TdictionaryNode& other) override;
  void setValue(TdictionaryNode& other) override;
  TdictionaryNode* clone(long level) override;
  void destroy() override;
  TdictionaryNode*& forward(long i) override;

private:
  TnameString fKey;
  TnameInfo fData;
};

/// A dictionary from names to what is known of them.
///
/// \code
///   TnameDictionary parts;
///   Tbookmark place;
///   const TnameString arm("arm12");
///   if (!parts.search(arm, place))
///     parts.insert(arm, TnameInfo(), place);
///   for (TnameDictionaryNode& each : parts)
///     std::cout << each.key() << '\n';
/// \endcode
class FOUNDATION_API TnameDictionary : public Tdictionary
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  /// Adds a name, in front of those that are equal to it, and returns its node. \p bookmark, which a search for the
  /// same name filled, saves another search. Throws TmemoryException, with nothing changed, when there is no memory.
  TnameDictionaryNode* insert(const TnameString& key, const TnameInfo& data);
  TnameDictionaryNode* insert(const TnameString& key, const TnameInfo& data, Tbookmark& bookmark);

  /// Takes out and destroys the first node of \p key. False when there is none.
  bool remove(const TnameString& key);

  /// The first node of \p key, null when there is none. \p bookmark receives the way there, or to where it would stand.
  TnameDictionaryNode* findNode(const TnameString& key);
  TnameDictionaryNode* findNode(const TnameString& key, Tbookmark& bookmark);
  const TnameDictionaryNode* findNode(const TnameString& key) const;

  /// The same, with the node's value in the place of the node.
  TnameInfo* search(const TnameString& key);
  TnameInfo* search(const TnameString& key, Tbookmark& bookmark);
  const TnameInfo* search(const TnameString& key) const;

  TnodeIterator<TnameDictionaryNode> begin() noexcept { return TnodeIterator<TnameDictionaryNode>(forward(0)); }
  TnodeIterator<TnameDictionaryNode> end() noexcept { return TnodeIterator<TnameDictionaryNode>(); }
  TnodeIterator<const TnameDictionaryNode> begin() const noexcept
  {
    return TnodeIterator<const TnameDictionaryNode>(const_cast<TnameDictionary*>(this)->forward(0));
  }
  TnodeIterator<const TnameDictionaryNode> end() const noexcept { return TnodeIterator<const TnameDictionaryNode>(); }
};

static_assert(sizeof(TnameDictionaryNode) == 4 * sizeof(void*), "a table of functions, a text, a count and a list");
static_assert(sizeof(TnameDictionary) == sizeof(Tdictionary), "the list alone");
