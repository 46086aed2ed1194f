/// \file
/// TstringHashTable and TnameTable: tables that find a string or a type record by a string; TstringKeyTable for others.
///
/// Use them where many texts are looked up and no order is needed. A look-up costs the hash of the key and, as a rule,
/// one comparison. The trap: keys that differ in their last characters only, and there in digits, have few different
/// hashes (see Tstring::hash): of a hundred thousand like "node1", "node2" each is compared with hundreds. Tname is
/// made for those.

#pragma once

#include "Foundation/Container/ThashTable.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/Tstring.h"

#include <memory>
#include <new>
#include <utility>

class Tmetaclass;

/// A key and a value in a table.
template <class Value>
class TstringKeyEntry : public ThashTableEntry
{
public:
  template <class... Arguments>
  explicit TstringKeyEntry(Tstring key, Arguments&&... value)
    : ThashTableEntry{}
    , fKey(std::move(key))
    , fValue(std::forward<Arguments>(value)...)
  {
  }

  const Tstring& key() const noexcept { return fKey; }
  Value& value() noexcept { return fValue; }
  const Value& value() const noexcept { return fValue; }

private:
  Tstring fKey;
  Value fValue;
};

/// A table of values of type \p Value, each under a string.
///
/// \code
///   TstringHashTable colours;
///   colours.insert("lamp", "white");
///   if (const Tstring* colour = colours.find("lamp"))
///     std::cout << *colour << '\n';
///   for (const auto& each : colours)
///     std::cout << each.key() << " is " << each.value() << '\n';
/// \endcode
///
/// Keys are equal byte by byte. Several entries may have one key; the newest is found first until the table changes its
/// size, which reverses the order among them. Keys and values are shared as strings are; arguments may be the table's
/// own. What adds an entry throws TmemoryException when there is no memory for it and leaves the table as it was.
template <class Value>
class TstringKeyTable : public ThashTable
{
public:
  using Entry = TstringKeyEntry<Value>;

  /// Bucket counts as in ThashTable.
  explicit TstringKeyTable(unsigned int minimum = 8, unsigned int maximum = 0x80000000u)
    : ThashTable(minimum, maximum)
  {
  }
  ~TstringKeyTable() { deleteEntries(); }

  /// Adds an entry whatever there is, and returns 1.
  unsigned char insert(const Tstring& key, const Value& value)
  {
    add(key, key.hash(), value);
    return 1;
  }

  /// Adds an entry and returns 1; or returns 0 and changes nothing when the key is there.
  unsigned char insertUnique(const Tstring& key, const Value& value)
  {
    const TuInt32 hash = key.hash();
    if (entryOf(key, hash))
      return 0;
    add(key, hash, value);
    return 1;
  }

  /// Adds an entry and returns 1; or gives the entry found the value and returns 0.
  unsigned char insertReplace(const Tstring& key, const Value& value)
  {
    const TuInt32 hash = key.hash();
    if (Entry* entry = entryOf(key, hash))
    {
      entry->value() = value;
      return 0;
    }
    add(key, hash, value);
    return 1;
  }

  /// The value of the key, which gets an entry with a default one when there is none.
  Value& findOrInsert(const Tstring& key)
  {
    const TuInt32 hash = key.hash();
    Entry* entry = entryOf(key, hash);
    return (entry ? entry : add(key, hash))->value();
  }

  /// Takes out the entry found. 0 when there is none.
  unsigned char remove(const Tstring& key) noexcept
  {
    Entry* entry = entryOf(key, key.hash());
    if (!entry)
      return 0;
    unlinkEntry(entry);
    delete entry;
    shrinkTable();
    return 1;
  }

  /// Copies the value found and returns 1; or returns 0 and leaves \p value alone.
  unsigned char find(const Tstring& key, Value& value) const
  {
    const Value* found = find(key);
    if (!found)
      return 0;
    value = *found;
    return 1;
  }

  /// The value found, which stays in its place as long as its entry is in the table; null when there is none.
  Value* find(const Tstring& key) noexcept
  {
    Entry* entry = entryOf(key, key.hash());
    return entry ? &entry->value() : nullptr;
  }
  const Value* find(const Tstring& key) const noexcept { return const_cast<TstringKeyTable*>(this)->find(key); }

  /// Removes all entries and goes back to the minimum of buckets, when there is memory for that.
  void reset() noexcept
  {
    deleteEntries();
    reinitializeTable();
  }

  auto begin() noexcept { return beginAs<Entry>(); }
  auto end() noexcept { return TentryIterator<Entry>(); }
  auto begin() const noexcept { return beginAs<const Entry>(); }
  auto end() const noexcept { return TentryIterator<const Entry>(); }

  /// A position in a table that can remove entries on its way. Insertion, and other removal, invalidate it.
  class Iterator : public ThashTableIterator
  {
  public:
    /// Stands on the first entry.
    explicit Iterator(TstringKeyTable& table) noexcept
      : ThashTableIterator(table)
      , fTable(table)
    {
      _first();
    }

    /// The entry that it stands on; null at the end.
    Entry* entry() const noexcept { return static_cast<Entry*>(ThashTableIterator::entry()); }

    /// Copies the value of the entry and returns 1; or returns 0 at the end and leaves \p value alone.
    unsigned char getData(Value& value) const
    {
      if (!entry())
        return 0;
      value = entry()->value();
      return 1;
    }

    /// Goes to the next entry. 0 at the end.
    unsigned char next() noexcept { return _next(); }

    /// Removes the entry and goes to the next one. 0 at the end. The table does not shrink.
    unsigned char removeThenNext() noexcept
    {
      Entry* removed = entry();
      if (!removed)
        return 0;
      fTable.unlinkEntry(removed);
      _next();
      delete removed;
      return entry() != nullptr;
    }

    /// Inserts all entries of the table into \p other, which may be the table itself, in the order of a walk. When
    /// memory runs out, TmemoryException is thrown and \p other has those up to there. Does not move.
    void appendAllTo(TstringKeyTable& other) const
    {
      // Listed first: the table may grow under the walk, but entries stay in their place.
      const std::unique_ptr<const Entry*[]> entries(new (std::nothrow) const Entry*[fTable.entryCount()]);
      if (!entries)
        throw TmemoryException();
      const Entry** end = entries.get();
      for (const Entry& each : fTable)
        *end++ = &each;
      for (const Entry** each = entries.get(); each != end; ++each)
        other.add((*each)->key(), (*each)->fHash, (*each)->value());
    }

  private:
    TstringKeyTable& fTable;
  };

private:
  Entry* entryOf(const Tstring& key, TuInt32 hash) const noexcept
  {
    return findEntry<Entry>(hash, [&key](const Entry& each) { return each.key() == key; });
  }
  template <class... Arguments>
  Entry* add(const Tstring& key, TuInt32 hash, const Arguments&... value)
  {
    Entry* entry = new (std::nothrow) Entry(key, value...);
    if (!entry)
      throw TmemoryException();
    insertWithHash(entry, hash);
    return entry;
  }
  void deleteEntries() noexcept
  {
    for (auto each = begin(); each != end();)
      delete &*each++;
  }
};

/// Strings by strings.
class TstringHashTable : public TstringKeyTable<Tstring>
{
public:
  using TstringKeyTable::TstringKeyTable;
};

/// Type records, which are borrowed, by names of classes.
class TnameTable : public TstringKeyTable<Tmetaclass*>
{
public:
  using TstringKeyTable::TstringKeyTable;
};

static_assert(sizeof(TstringHashTable::Entry) == 4 * sizeof(void*), "a link, a hash, a key and a value");
static_assert(sizeof(TnameTable::Entry) == 4 * sizeof(void*), "a link, a hash, a key and a value");
static_assert(sizeof(TstringHashTable) == sizeof(ThashTable), "the generic table alone");
