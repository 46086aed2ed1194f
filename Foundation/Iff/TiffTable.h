/// \file
/// TiffTable: a hash table from chunk tags to type records.
///
/// Use it to find the class that handles a chunk. Look-up is a mask and a walk along a chain of one entry or so: a tag
/// is its own hash. That makes it quick and trusting: tags that agree in their low bits share a bucket, so fill it from
/// the program, not from files. What it can do, and its trap, stand in TkeyedTable.h.

#pragma once

#include "Foundation/Container/TkeyedTable.h"
#include "Foundation/Iff/TiffTag.h"

class Tmetaclass;

/// A tag and a record.
struct TiffTableEntry : ThashTableEntry // whose hash is the key
{
  using Key = TiffTag;
  using Value = Tmetaclass*;

  Tmetaclass* fValue;

  explicit TiffTableEntry(TiffTag, Tmetaclass* value = nullptr) noexcept
    : ThashTableEntry{}
    , fValue(value)
  {
  }

  TiffTag key() const noexcept { return fHash; }
  Tmetaclass*& value() noexcept { return fValue; }
  Tmetaclass* const& value() const noexcept { return fValue; }

  static TuInt32 hash(TiffTag key) noexcept { return key.value(); }
  bool matches(TiffTag) const noexcept { return true; } // as the hashes do
};

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
class TiffTable : public TkeyedTable<TiffTableEntry>
{
public:
  using TkeyedTable::TkeyedTable;

  /// A walk that gives keys as numbers.
  class Iterator : public TkeyedTable::Iterator
  {
  public:
    using TkeyedTable::Iterator::Iterator;

    TuInt32 key() const noexcept { return entry()->fHash; }
    unsigned char getKey(TuInt32& key) const noexcept { return !isDone() && (key = this->key(), true); }
  };
};

static_assert(sizeof(TiffTableEntry) == 3 * sizeof(void*), "a link, the tag and a record");
