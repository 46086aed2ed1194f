/// \file
/// TnameDictionary: names in the order in which people number things, with what is known of each.
///
/// Tname::nameTable() is the one of all interned names. Others may be made: each keeps a count and a list of objects
/// under each name and leaves it to its owner what they mean. Costs and traps are those of Tdictionary.

#pragma once

#include "Foundation/Container/TtypedDictionary.h"
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
  Tcell** linkTo(const TnameObject* object) noexcept;
  void removeCell(Tcell** link) noexcept;

  Tint32 fCount = 0;
  Tcell* fObjects = nullptr;
};

/// A name and its value in a dictionary.
class FOUNDATION_API TnameDictionaryNode : public TtypedNode<TnameDictionaryNode, TnameString, TnameInfo>
{
public:
  using TtypedNode::TtypedNode;

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  /// -1, 0 or 1.
  static int order(const TnameString& left, const TnameString& right) noexcept
  {
    const int order = TnameString::strnumcmp(left.asC(), right.asC());
    return (order > 0) - (order < 0);
  }
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
class FOUNDATION_API TnameDictionary : public TtypedDictionary<TnameDictionaryNode>
{
public:
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

static_assert(sizeof(TnameDictionaryNode) == 4 * sizeof(void*), "a table of functions, a text, a count and a list");
static_assert(sizeof(TnameDictionary) == sizeof(Tdictionary), "the list alone");
