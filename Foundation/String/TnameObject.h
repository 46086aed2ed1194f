/// \file
/// TnameObject: the base of what has a name, and TnameObjectIterator, which finds such objects by their name.
///
/// An object's name is interned, so that the object can be found by it, or plain, which costs less than a list entry
/// and a node and is found by nobody. The trap: to let go of an interned name is linear in the objects that got the
/// same name later; do not leave thousands of objects with one name.

#pragma once

#include "Foundation/String/Tname.h"

#include <cstddef>
#include <iterator>

/// An object with a name.
///
/// \code
///   TnameObject lamp(Tname("lamp"));
///   for (TnameObject* each : TnameObjectIterator("lamp"))
///     std::cout << each->name() << '\n';
/// \endcode
///
/// As long as its name is interned, the object stands in the name's list of objects, unless Tname::removeObject() took
/// it out. What takes an interned name throws
/// TmemoryException, with nothing changed, when there is no memory for that.
class FOUNDATION_API TnameObject
{
public:
  /// The record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// This object when \p type is the record of its class or of a base class; otherwise null.
  virtual void* cast(Tmetaclass* type);

  /// Takes the object out of the list of its name. From lists that it was put into by hand it must have been taken.
  virtual ~TnameObject();

  /// What the creator of \p type makes, when \p type is this class or derives from it; otherwise, and since this class
  /// has no creator, null.
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

  /// Without a name
  TnameObject() noexcept = default;

  explicit TnameObject(const Tname& name);

  /// A copy has the same name, and is in its list too.
  TnameObject(const TnameObject& other);
  TnameObject& operator=(const TnameObject& other);

  /// The name, interned or plain; "" without one.
  Tstring name() const noexcept { return fIsInterned ? fName.asString() : fString; }

  /// The interned name; none when it is plain.
  const Tname& internedName() const noexcept { return fName; }
  bool isInterned() const noexcept { return fIsInterned; }

  void setName(const Tname& name);
  void setPlainName(const Tstring& name) noexcept;

  /// Whether nothing else has the name: no other Tname holds an interned one, none at all what a Tname makes of a plain
  /// one (which is always so when a '#' stands at its end). False without a name. Throws TmemoryException when there is
  /// no memory to see about a plain name.
  bool hasUniqueName() const;

private:
  friend class Tname;

  void leaveList() noexcept;

  Tname fName;     // none when the name is plain
  Tstring fString; // empty when the name is interned
  bool fIsInterned = true;
  bool fIsListed = false; // under fName
};

/// Walks the objects that bear an interned name, of all classes or of one and what derives from it, the one named last
/// first.
///
/// Names and objects may come and go meanwhile: an object that is put into the list is not met any more, one that is
/// taken out, and so one that is destroyed, is not met either, and the walk goes on behind it; the last holder of the
/// name ends it. The walk is no holder.
class FOUNDATION_API TnameObjectIterator
{
public:
  /// Stands on the first object of \p name whose class is \p type or derives from it; null is all classes. Throws
  /// TmemoryException when there is no memory to look the name up.
  explicit TnameObjectIterator(const Tstring& name, Tmetaclass* type = nullptr);
  ~TnameObjectIterator();

  TnameObjectIterator(const TnameObjectIterator&) = delete;
  TnameObjectIterator& operator=(const TnameObjectIterator&) = delete;

  /// The object that it stands on; null at the end, and when that object left the list.
  TnameObject* item() const noexcept { return fCell ? fCell->fObject : nullptr; }

  /// Goes on and returns item().
  TnameObject* next();

  /// For a range `for`, which walks on from where this stands.
  class Tposition
  {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TnameObject*;
    using difference_type = std::ptrdiff_t;
    using pointer = TnameObject**;
    using reference = TnameObject*;

    explicit Tposition(TnameObjectIterator* walk = nullptr) noexcept
      : fWalk(walk)
    {
    }
    TnameObject* operator*() const noexcept { return fWalk->item(); }
    Tposition& operator++()
    {
      fWalk->next();
      return *this;
    }
    bool operator==(const Tposition& other) const noexcept { return isAtEnd() == other.isAtEnd(); }
    bool operator!=(const Tposition& other) const noexcept { return !(*this == other); }

  private:
    bool isAtEnd() const noexcept { return !fWalk || !fWalk->item(); }

    TnameObjectIterator* fWalk;
  };

  Tposition begin() noexcept { return Tposition(this); }
  Tposition end() noexcept { return Tposition(); }

private:
  friend class TnameInfo;

  static void leaveCell(const TnameInfo::Tcell* cell) noexcept;

  const TnameInfo::Tcell* fCell = nullptr;
  const TnameInfo::Tcell* fNext = nullptr; // where to look for the next object
  Tmetaclass* fType;
  TnameObjectIterator* fNextWalk; // of all that there are
};

static_assert(sizeof(TnameObject) == 4 * sizeof(void*), "a table of functions, two names and what is true of them");
