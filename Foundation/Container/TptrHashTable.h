/// \file
/// TptrHashTable: entries of the caller's, found by an address.
///
/// Use it to keep a record beside each of many objects or blocks. Look-up, insertion and removal take constant time and
/// allocate nothing but, now and then, buckets; when those cannot be had the table goes on with longer chains, so that
/// it can be trusted when memory is short. The trap: it owns no entry; free them before the table goes.

#pragma once

#include "Foundation/Container/ThashTable.h"

#include <cstdint>

/// What an entry of a TptrHashTable begins with.
struct TptrHashTableEntry : ThashTableEntry
{
  const void* fKey; // set by insert
};

/// A table of entries, one for each address.
///
/// \code
///   struct Mark : TptrHashTableEntry { int fUses; };
///   TptrHashTable marks;
///   marks.insert(new Mark, object);
///   static_cast<Mark*>(marks.find(object))->fUses = 1;
///   delete static_cast<Mark*>(marks.remove(object));
/// \endcode
class FOUNDATION_API TptrHashTable : public ThashTableOf<TptrHashTableEntry>
{
public:
  /// As ThashTable.
  explicit TptrHashTable(unsigned int minimum = 8, unsigned int maximum = 0x80000000u)
    : ThashTableOf(minimum, maximum)
  {
  }

  /// Adds \p entry for \p key, which must have none. It must stay where it is until remove() gives it back.
  void insert(TptrHashTableEntry* entry, const void* key) noexcept
  {
    entry->fKey = key;
    insertWithHash(entry, hash(key));
  }

  /// The entry of \p key, null when there is none.
  TptrHashTableEntry* find(const void* key) const noexcept
  {
    return findEntry<TptrHashTableEntry>(hash(key),
                                         [key](const TptrHashTableEntry& entry) { return entry.fKey == key; });
  }

  /// Takes the entry of \p key out and returns it, null when there is none. The table may shrink by half.
  TptrHashTableEntry* remove(const void* key) noexcept;

  /// The upper half of a product, folded so that each of the 47 bits of an address reaches the low bits, which choose
  /// the bucket. Factor and shift are those, of some tried, under which objects at equal distances collide least.
  static TuInt32 hash(const void* key) noexcept
  {
    const TuInt64 product = reinterpret_cast<std::uintptr_t>(key) * TuInt64(0xFF51AFD7ED558CCD);
    return TuInt32(product >> 32 ^ product >> 50);
  }
};
