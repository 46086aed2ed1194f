/// \file
/// TkeyedTable: a hash table that owns its entries and finds a value by a key, whatever both are.
///
/// Use it to make a table of your own; TstringHashTable, TnameTable and TiffTable are such. A look-up costs the hash of
/// the key and, as a rule, one comparison. The trap: an iterator does not survive insertion, nor an entry that somebody
/// else removes.

#pragma once

#include "Foundation/Container/ThashTable.h"
#include "Foundation/Debug/Texception.h"

#include <memory>
#include <new>

/// A table of values, each under a key. What they are, \p E says:
///
/// \code
///   struct Weight : ThashTableEntry
///   {
///     using Key = int;
///     using Value = double;
///     explicit Weight(int part, double kilograms = 0);
///     int key() const;
///     double& value();
///     const double& value() const;
///     static TuInt32 hash(int part);
///     bool matches(int part) const;   // asked where the hashes are equal
///   };
///   TkeyedTable<Weight> weights;
///   weights.insert(204, 1.5);
///   if (const double* kilograms = weights.find(204)) …
///   for (const Weight& each : weights)
///     total += each.value();
/// \endcode
///
/// Several entries may have one key; the newest is found first until the table changes its size, which reverses the
/// order among them. Arguments may be the table's own. What adds an entry throws TmemoryException when there is no
/// memory for it and leaves the table as it was.
template <class E>
class TkeyedTable : public ThashTableOf<E>
{
public:
  using Entry = E;
  using Key = typename Entry::Key;
  using Value = typename Entry::Value;

  /// Bucket counts as in ThashTable.
  explicit TkeyedTable(unsigned int minimum = 8, unsigned int maximum = 0x80000000u)
    : ThashTableOf<E>(minimum, maximum)
  {
  }
  ~TkeyedTable() { deleteEntries(); }

  /// Adds an entry whatever there is, and returns 1.
  unsigned char insert(const Key& key, const Value& value)
  {
    add(key, Entry::hash(key), value);
    return 1;
  }

  /// Adds an entry and returns 1; or returns 0 and changes nothing when the key is there.
  unsigned char insertUnique(const Key& key, const Value& value)
  {
    const TuInt32 hash = Entry::hash(key);
    if (entryOf(key, hash))
      return 0;
    add(key, hash, value);
    return 1;
  }

  /// Adds an entry and returns 1; or gives the entry found the value and returns 0.
  unsigned char insertReplace(const Key& key, const Value& value)
  {
    const TuInt32 hash = Entry::hash(key);
    if (Entry* entry = entryOf(key, hash))
    {
      entry->value() = value;
      return 0;
    }
    add(key, hash, value);
    return 1;
  }

  /// The value of the key, which gets an entry with a default one when there is none.
  Value& findOrInsert(const Key& key)
  {
    const TuInt32 hash = Entry::hash(key);
    Entry* entry = entryOf(key, hash);
    return (entry ? entry : add(key, hash))->value();
  }

  /// Takes out the entry found and returns 1, or returns 0 when there is none. The table may shrink by half.
  unsigned char remove(const Key& key) noexcept
  {
    Entry* entry = entryOf(key, Entry::hash(key));
    if (!entry)
      return 0;
    this->unlinkEntry(entry);
    delete entry;
    this->shrinkTable();
    return 1;
  }

  /// Copies the value found and returns 1; or returns 0 and leaves \p value alone.
  unsigned char find(const Key& key, Value& value) const
  {
    const Value* found = find(key);
    if (!found)
      return 0;
    value = *found;
    return 1;
  }

  /// The value found, which stays in its place as long as its entry is in the table; null when there is none.
  Value* find(const Key& key) noexcept
  {
    Entry* entry = entryOf(key, Entry::hash(key));
    return entry ? &entry->value() : nullptr;
  }
  const Value* find(const Key& key) const noexcept { return const_cast<TkeyedTable*>(this)->find(key); }

  /// Removes all entries; reset() goes back to the minimum of buckets, when there is memory for that, clearall() keeps
  /// the buckets for what comes next.
  void reset() noexcept
  {
    deleteEntries();
    this->reinitializeTable();
  }
  void clearall() noexcept
  {
    for (Iterator at(*this); at.removeThenNext();)
    {
    }
  }

  /// A position in a table that can remove entries on its way.
  ///
  /// \code
  ///   for (TiffTable::Iterator at(table); !at.isDone();)
  ///     wanted(at.key()) ? at.next() : at.removeThenNext();
  /// \endcode
  class Iterator : public ThashTableIterator
  {
  public:
    /// Stands on the first entry.
    explicit Iterator(TkeyedTable& table) noexcept
      : ThashTableIterator(table)
      , fTable(table)
    {
      _first();
    }

    /// Go to the first or the next entry. 0 when there is none: the walk is done.
    unsigned char first() noexcept { return _first(); }
    unsigned char next() noexcept { return _next(); }
    bool isDone() const noexcept { return !entry(); }

    /// The entry that it stands on; null at the end.
    Entry* entry() const noexcept { return static_cast<Entry*>(ThashTableIterator::entry()); }

    /// Of that entry; there must be one.
    decltype(auto) key() const noexcept { return entry()->key(); }
    Value& data() const noexcept { return entry()->value(); }

    /// The same with a check: 1, or 0 with the argument as it was at the end.
    unsigned char getKey(Key& key) const { return !isDone() && (key = this->key(), true); }
    unsigned char getData(Value& value) const { return !isDone() && (value = data(), true); }

    /// Removes the entry, if any, and goes to the next one as next() does. The table does not shrink.
    unsigned char removeThenNext() noexcept
    {
      const std::unique_ptr<Entry> removed(entry());
      if (!removed)
        return 0;
      fTable.unlinkEntry(removed.get());
      return _next();
    }

    /// Inserts all entries of the table into \p other, which may be the table itself, in the order of a walk. When
    /// memory runs out, TmemoryException is thrown and \p other has those up to there. Does not move.
    void appendAllTo(TkeyedTable& other) const
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
    TkeyedTable& fTable;
  };

private:
  Entry* entryOf(const Key& key, TuInt32 hash) const noexcept
  {
    return this->template findEntry<Entry>(hash, [&key](const Entry& each) { return each.matches(key); });
  }
  template <class... Arguments>
  Entry* add(const Key& key, TuInt32 hash, const Arguments&... value)
  {
    Entry* entry = new (std::nothrow) Entry(key, value...);
    if (!entry)
      throw TmemoryException();
    this->insertWithHash(entry, hash); // which works without room to grow, too
    return entry;
  }
  void deleteEntries() noexcept
  {
    for (auto each = this->begin(); each != this->end();)
      delete &*each++;
  }
};
