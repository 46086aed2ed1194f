/// \file
/// Tmetaclass: what the program knows about a typed class at run time.
///
/// Each typed class has one static record: its name, size, base classes, chunk tag and creator. Records register
/// themselves when their module is loaded and go with it. Ask an object for its record with typeof(), a record for its
/// kin with isa(), the registry for a record by name or chunk tag with findClass(). isa() by record costs a test of a
/// bit, by name a walk up the base classes; findClass() a look-up in a hash table.

#pragma once

#include "Foundation/Iff/TiffTag.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>

class TdebugOutput;
class Tmetaclass;
class TtypeDictionary;
class TtypeidArray;

/// Makes objects for a record whose class needs more than a function.
class FOUNDATION_API TconstructorClass
{
public:
  virtual ~TconstructorClass();

  /// A new object as \p requested sees it (see Tmetaclass::construct), or null.
  virtual void* create(Tmetaclass* requested) = 0;

protected:
  TconstructorClass() = default;
  TconstructorClass(const TconstructorClass&) = default;
  TconstructorClass& operator=(const TconstructorClass&) = default;
};

/// The type record of one class.
///
/// What one class is, an object tells by three members that every typed class has: `typeof()`, its record;
/// `cast(type)`, the object as its part of that class, null when it has none; and the static `construct(type)`, a new
/// object of a class that is this one or derives from it, null for others.
///
/// \code
///   // In the header:            static Tmetaclass* fTypeid;
///   // In the source:
///   static Tmetaclass record(&Tlamp::fTypeid, "Tlamp", sizeof(Tlamp), createLamp, 0, 0, &Tlight::fTypeid);
///   Tmetaclass* Tlamp::fTypeid = &record;
/// \endcode
///
/// Parents are given as addresses of static record pointers, which hold their value before any code runs: the order in
/// which records are constructed does not matter. Ask isa() only after static initialisation, though; what it finds out
/// about the parents is kept. Names and creators are not copied and must outlive the record.
///
/// Nothing is locked: construct and destroy records, and ask a record for the first time, in one thread.
class FOUNDATION_API Tmetaclass
{
public:
  using Creator = void* (*)(Tmetaclass* requested);

  /// Registers the record and gives it the next type id; ids are not used again. \p own, for the reader of the source,
  /// and \p fresh are not used. \p tag is 0 for a class that no chunk stands for. The registry takes 65,536 records in
  /// the life of a process; the next one is reported on standard error and is known to its kin but not to the registry,
  /// like one that there is no memory for.
  Tmetaclass(Tmetaclass** own, const char* name, unsigned int size, Creator creator, unsigned int tag,
             unsigned char fresh, Tmetaclass** parent1 = nullptr, Tmetaclass** parent2 = nullptr,
             Tmetaclass** parent3 = nullptr, Tmetaclass** parent4 = nullptr) noexcept;
  Tmetaclass(Tmetaclass** own, const char* name, unsigned int size, TconstructorClass* creator, unsigned int tag,
             unsigned char fresh, Tmetaclass** parent1 = nullptr, Tmetaclass** parent2 = nullptr,
             Tmetaclass** parent3 = nullptr, Tmetaclass** parent4 = nullptr) noexcept;
  Tmetaclass(Tmetaclass** own, const char* name, unsigned int size, std::nullptr_t, unsigned int tag,
             unsigned char fresh, Tmetaclass** parent1 = nullptr, Tmetaclass** parent2 = nullptr,
             Tmetaclass** parent3 = nullptr, Tmetaclass** parent4 = nullptr) noexcept
    : Tmetaclass(own, name, size, Creator(nullptr), tag, fresh, parent1, parent2, parent3, parent4)
  {
  }

  /// A copy says the same, with the same id and what the original found out of its parents, but the registry does not
  /// know it.
  Tmetaclass(const Tmetaclass& other) noexcept;
  Tmetaclass& operator=(const Tmetaclass& other) noexcept;

  /// Takes the record out of the registry.
  ~Tmetaclass();

  const char* name() const noexcept { return fName; }
  TiffTag tag() const noexcept { return fTag; }

  /// Bytes of an object, as the record was told.
  unsigned int size() const noexcept { return fSize; }

  /// The size without those of the parents (modulo 2^32 when they are larger).
  unsigned int extraSize() const noexcept;

  /// The parents; null from superCount() on.
  unsigned int superCount() const noexcept { return fParentCount; }
  Tmetaclass* super(unsigned int i) const noexcept;

  /// Whether the class is \p type or derives from it. Nothing is a null type. A record that gets an ancestor after its
  /// first question does not notice.
  bool isa(const Tmetaclass* type) const noexcept { return type == this ? true : type && istype(type); }
  bool isnota(const Tmetaclass* type) const noexcept { return !isa(type); }
  bool isexactlya(const Tmetaclass* type) const noexcept { return type == this; }
  bool isnotexactlya(const Tmetaclass* type) const noexcept { return type != this; }

  /// The same by class name, compared byte by byte.
  bool isa(const char* name) const noexcept;
  bool isnota(const char* name) const noexcept { return !isa(name); }
  bool isexactlya(const char* name) const noexcept;
  bool isnotexactlya(const char* name) const noexcept { return !isexactlya(name); }

  /// Whether there is no creator.
  bool isAbstract() const noexcept { return !fCreator && !fCreatorObject; }

  /// Puts \p creator, which stays the caller's, in the place of whatever made objects before.
  void setCreator(TconstructorClass* creator) noexcept;

  /// A new object of the class, as a pointer to its part of class \p requested; null without a creator, and when the
  /// object is none of \p requested.
  void* construct(Tmetaclass* requested) const;

  /// The record registered first under the name, of all or of \p base and what derives from it; null without one.
  static Tmetaclass* findClass(const char* name) noexcept;
  static Tmetaclass* findClass(const char* name, const Tmetaclass* base) noexcept;

  /// The record registered first with the tag; null without one. Tag 0 finds the first class that no chunk stands for.
  static Tmetaclass* findClass(TiffTag tag) noexcept;

  /// Puts \p base before the elements of \p out, and all that derives from it before that: of the classes that have it
  /// for a parent the one registered last first, each in the same way behind what derives from it. A class that derives
  /// on two ways is listed twice. Null for \p base adds nothing. Throws TmemoryException, \p out then holds a part.
  static void getDerivedClasses(Tmetaclass* base, TtypeidArray& out);

  /// A new dictionary, the caller's, of the records that are \p base or derive from it; empty when \p base is null.
  /// Throws TmemoryException.
  static TtypeDictionary* generateDictionaryFor(Tmetaclass* base);

  /// Prints the tree of classes on standard output, the record's own size before its whole size:
  /// \code
  ///   TserverMsg:  +4 = 4    (abstract)
  ///   . TserverModifiedMsg:  +0 = 4
  /// \endcode
  static void dumpAllClasses();

  /// The same of what derives from \p base, \p depth levels deep. Null prints nothing.
  static void dumpAllClassesDerivedFrom(Tmetaclass* base, int depth);

  /// Prints name, id, tag, size and whether there is a creator on a line, from \p level 1 on all ancestors below it.
  void debug(TdebugOutput& out, unsigned int level) const;

  /// The same on standard error.
  static void debugMe(const Tmetaclass& record, unsigned int level);

private:
  friend class TmetaclassRegistry;
  static constexpr TuInt16 kLastId = 0xFFFF; // also that of every record which the registry refused

  void registerClass() noexcept;

  bool istype(const Tmetaclass* type) const noexcept
  {
    const TuInt16 id = type->fTypeId;
    const unsigned int bit = unsigned(id) - lower();
    if (bit > fSpan)
      return false;
    if (!fTable)
      return istypeWithoutTable(type);
    return (fTable[bit / 32] >> bit % 32 & 1) && (id != kLastId || derivesFrom(type));
  }
  bool istypeWithoutTable(const Tmetaclass* type) const noexcept;
  bool derivesFrom(const Tmetaclass* type) const noexcept;

  void buildTable() const;
  void freeTable() const noexcept;
  void fillTable(const TtypeidArray& ancestors) const noexcept;

  // Words of the table.
  std::size_t getTableSize() const noexcept { return (std::size_t(fSpan) + 32) / 32; }

  // The lowest and the highest id in the table. Without one all ids are between them, so that a look at these is all
  // that most questions take whose answer is no.
  TuInt16 lower() const noexcept { return fLower; }
  TuInt16 upper() const noexcept { return TuInt16(fLower + fSpan); }
  void setBounds(TuInt16 lowest, TuInt16 highest) const noexcept
  {
    fLower = lowest;
    fSpan = TuInt16(highest - lowest);
  }
  void setNoBounds() const noexcept { setBounds(0, kLastId); }

  mutable TuInt32* fTable = nullptr; // a bit for each id from the lowest to the highest of the ancestors
  Tmetaclass** fParents[4];
  const char* fName;
  TiffTag fTag;
  mutable TuInt16 fLower = 0;
  mutable TuInt16 fSpan = kLastId; // to the highest
  Creator fCreator = nullptr;
  TconstructorClass* fCreatorObject = nullptr; // one of the two at most
  TuInt16 fSize;
  TuInt16 fTypeId = 0;
  TuInt8 fParentCount = 0;
};
