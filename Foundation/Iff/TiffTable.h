/// \file
/// TiffTable: a hash table from chunk tags to type records.
///
/// Use it to find the class that handles a chunk. Look-up is a mask and a walk along a chain of one entry or so: a tag
/// is its own hash. That makes it quick and trusting: tags that agree in their low bits share a bucket, so fill it from
/// the program, not from files. The trap: an iterator does not survive insertion, nor an entry that somebody else
/// removes.

#pragma once

#include "Foundation/Container/ThashTable.h"
#include "Foundation/Iff/TiffTag.h"

class Tmetaclass;

/// Type records by tag. The records stay their owners'; null is a value like any other.
///
/// \code
///   TiffTable readers;
///   readers.insertUnique("BMHD", Theader::fTypeid);
///   Tmetaclass* type;
///   if (readers.find(tag, type)) …
///   for (const TiffTable::Entry& each : readers)
///     std::cout << each.key() << " " << each.fValue->name() << "\n";
/// \endcode
///
/// Several entries may have one key. What is said of "the entry" of a key then goes for one of them: the newest, as
/// long as the bucket count has not changed since it was inserted.
class FOUNDATION_API TiffTable : public ThashTable
{
public:
  struct Entry : ThashTableEntry // whose hash is the key
  {
    Tmetaclass* fValue;

    TiffTag key() const noexcept { return fHash; }
  };

  /// An empty table of \p initialSize buckets, which insertions may grow to \p growth, both rounded as ThashTable says.
  /// Throws TmemoryException.
  explicit TiffTable(unsigned int initialSize = 8, unsigned int growth = 0x80000000u);
  ~TiffTable();

  /// Adds an entry, whether the key is there already or not. Throws TmemoryException, and nothing is added.
  void insert(TiffTag key, Tmetaclass* value);

  /// Adds an entry and returns 1, or returns 0 when the key is there already. Throws as insert().
  unsigned char insertUnique(TiffTag key, Tmetaclass* value);

  /// Puts \p value in the place of that of the key's entry, or adds one. Throws as insert().
  void insertReplace(TiffTag key, Tmetaclass* value);

  /// The value of the key's entry, in its place until the entry is removed; null when there is none.
  Tmetaclass** find(TiffTag key) noexcept;
  Tmetaclass* const* find(TiffTag key) const noexcept;

  /// 1 with the value of the key's entry, or 0 with \p value as it was.
  unsigned char find(TiffTag key, Tmetaclass*& value) const noexcept;

  /// Removes the key's entry and returns 1, or returns 0 when there is none. The table may shrink by half.
  unsigned char remove(TiffTag key) noexcept;

  /// Removes all entries; reset() goes back to the initial size, clearall() keeps the buckets for what comes next.
  void reset() noexcept;
  void clearall() noexcept;

  TentryIterator<Entry> begin() noexcept { return beginAs<Entry>(); }
  TentryIterator<Entry> end() noexcept { return {}; }
  TentryIterator<const Entry> begin() const noexcept { return beginAs<const Entry>(); }
  TentryIterator<const Entry> end() const noexcept { return {}; }

  class Iterator;

private:
  Entry* entry(TiffTag key) const noexcept;
};

/// A walk over the entries of a table that may remove them on the way.
///
/// \code
///   for (TiffTable::Iterator at(table); !at.isDone();)
///     wanted(at.key()) ? at.next() : at.removeThenNext();
/// \endcode
class FOUNDATION_API TiffTable::Iterator : private ThashTableIterator
{
public:
  /// Stands on the first entry.
  explicit Iterator(TiffTable& table) noexcept
    : ThashTableIterator(table)
    , fTable(table)
  {
    _first();
  }

  /// Go to the first or the next entry. False when there is none: the walk is done.
  bool first() noexcept { return _first(); }
  bool next() noexcept { return _next(); }
  bool isDone() const noexcept { return !entry(); }

  /// Of the entry it stands on; there must be one.
  TuInt32 key() const noexcept { return entry()->fHash; }
  Tmetaclass*& data() const noexcept { return static_cast<Entry*>(entry())->fValue; }

  /// The same with a check: 1, or 0 with the argument as it was when the walk is done.
  unsigned char getKey(TuInt32& key) const noexcept;
  unsigned char getData(Tmetaclass*& data) const noexcept;

  /// Removes the entry it stands on, if any, and goes to the next one as next() does. The table does not shrink.
  bool removeThenNext() noexcept;

  /// Inserts every entry of the table, wherever the walk stands, into \p other. Nothing happens when that is the same
  /// table. Throws as insert(), with the entries before the failure inserted.
  void appendAllTo(TiffTable& other) const;

private:
  TiffTable& fTable;
};
