/// \file
/// Tmetaclass: what the program knows about a typed class at run time.
///
/// Each typed class has one static record: its name, size, base classes, chunk tag and creator. Records register
/// themselves when their module is loaded and go with it. Ask an object for its record with typeof(), a record for its
/// kin with isa(), the registry for a record by name with findClass(). isa() by record costs a test of a bit, by name a
/// walk up the base classes, findClass() a walk over all records.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>

class Tmetaclass;

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

  /// Registers the record and gives it the next type id. \p own, for the reader of the source, and \p fresh are not
  /// used. \p tag is 0 for a class that no chunk stands for. Without memory for the registry's table, findClass() does
  /// not know the record.
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

  /// A copy says the same, with the same id, but the registry does not know it.
  Tmetaclass(const Tmetaclass& other) noexcept;
  Tmetaclass& operator=(const Tmetaclass& other) noexcept;

  /// Takes the record out of the registry.
  ~Tmetaclass();

  const char* name() const noexcept { return fName; }
  TuInt32 tag() const noexcept { return fTag; }

  /// Bytes of an object, as the record was told.
  unsigned int size() const noexcept { return fSize; }

  /// The size without those of the parents (modulo 2^32 when they are larger).
  unsigned int extraSize() const noexcept;

  /// The parents; null from superCount() on.
  unsigned int superCount() const noexcept { return fParentCount; }
  Tmetaclass* super(unsigned int i) const noexcept;

  /// Whether the class is \p type or derives from it. Nothing is a null type. A record that gets an ancestor after its
  /// first question does not notice.
  bool isa(const Tmetaclass* type) const noexcept { return type && (type == this || istype(type)); }
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

private:
  void registerClass() noexcept;
  bool istype(const Tmetaclass* type) const noexcept;
  void buildTable() const noexcept;
  void getTableSize(TuInt16& lowest, TuInt16& highest) const noexcept;
  void fillTable(TuInt32* table) const noexcept;

  // The bounds of a built table
  TuInt16 lower() const noexcept { return TuInt16(fTable[0] & 0xFFFF); }
  TuInt16 upper() const noexcept { return TuInt16(fTable[0] >> 16); }
  static void setBounds(TuInt32* table, TuInt16 lowest, TuInt16 highest) noexcept
  {
    table[0] = TuInt32(highest) << 16 | lowest;
  }

  mutable TuInt32* fTable = nullptr; // word 0 the bounds of the ancestors' ids, then a bit for each id between them
  Tmetaclass** fParents[4];
  const char* fName;
  TuInt32 fTag;
  Creator fCreator = nullptr;
  TconstructorClass* fCreatorObject = nullptr; // one of the two at most
  TuInt16 fSize;
  TuInt16 fTypeId = 0;
  TuInt8 fParentCount = 0;
};
