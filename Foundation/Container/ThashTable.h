/// \file
/// ThashTable: the chained hash table under every table of names, strings, tags and addresses.
///
/// TkeyedTable makes a table of it that owns its entries. Derive from it where they are somebody else's: the entries
/// carry key, value and hash, the derived table compares keys. Look-up is a mask and a walk along a chain that is
/// shorter than one entry on average (the table grows beyond 3/8 of its bucket count). No entry is ever copied or
/// allocated here. The trap: the order of iteration changes whenever the bucket count does.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

/// What every entry of a hash table begins with. Derived entries add their key and value.
struct ThashTableEntry
{
  ThashTableEntry* fNext; // in the same bucket; null at the end
  TuInt32 fHash;
};

/// A hash table that knows nothing of keys.
///
/// \code
///   struct Weight : ThashTableEntry { int fPart; double fKilograms; };
///
///   class WeightTable : public ThashTableOf<Weight>
///   {
///   public:
///     WeightTable() : ThashTableOf(8, 1u << 20) {}
///     bool insert(Weight* weight) { return insertWithHash(weight, TuInt32(weight->fPart)); }
///     Weight* find(int part) const
///     {
///       return findEntry<Weight>(TuInt32(part), [part](const Weight& each) { return each.fPart == part; });
///     }
///   };
///   for (const Weight& each : weights)
///     total += each.fKilograms;
/// \endcode
///
/// Bucket counts are powers of two. An entry with hash h lies in bucket h & (bucketCount() - 1). Among entries with one
/// hash the newest comes first until the next change of size, which reverses the order within chains.
class FOUNDATION_API ThashTable
{
public:
  /// An empty table of \p minimum buckets, which keeps its bucket count between \p minimum and \p maximum. Both are
  /// rounded up to a power of two (at most 2^31); a minimum below 8 counts as 8, a maximum below the minimum as the
  /// minimum. Throws TmemoryException when there is no memory for the buckets.
  ThashTable(unsigned int minimum, unsigned int maximum);

  /// The entries belong to the derived table, which releases them before.
  ~ThashTable();

  ThashTable(const ThashTable&) = delete;
  ThashTable& operator=(const ThashTable&) = delete;

  TuInt32 entryCount() const noexcept { return fEntryCount; }
  TuInt32 bucketCount() const noexcept { return fBucketCount; }

  /// Where an entry with \p hash lies in a table of \p bucketCount buckets.
  static TuInt32 tableIndex(TuInt32 bucketCount, TuInt32 hash) noexcept { return hash & (bucketCount - 1); }

  /// Brings the bucket count in line with the entry count, in either direction and by as many steps as it takes. False
  /// when the size is locked or memory ran out; the table then stays as it was. Linear in entries and buckets.
  bool resize() noexcept;

  /// Keeps the bucket count as it is until as many calls of unlockSize() as of this. Allocates three words at the first
  /// call; false, and nothing locked, when there is no memory for them.
  bool lockSize() noexcept;

  /// False when the size is not locked. The last call that was due returns what resize() then says, others true.
  bool unlockSize() noexcept;

  /// Whether counts, limits, marks and the place of every entry are consistent. Linear. A bucket count outside the
  /// limits is: setTableSize() does not ask them.
  bool validate() const noexcept;

  /// Walks all entries of a table, as `Entry`. Insertion and change of size invalidate it; the entry that it stands on
  /// must not be freed before the next step.
  template <class Entry>
  class TentryIterator
  {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<Entry>;
    using difference_type = std::ptrdiff_t;
    using pointer = Entry*;
    using reference = Entry&;

    TentryIterator() = default;
    TentryIterator(ThashTableEntry* const* bucket, ThashTableEntry* const* end) noexcept
      : fBucket(bucket)
      , fEnd(end)
    {
      skipEmpty();
    }
    template <class Other, std::enable_if_t<std::is_same_v<Entry, const Other>, int> = 0>
    TentryIterator(const TentryIterator<Other>& other) noexcept
      : fEntry(other.fEntry)
      , fBucket(other.fBucket)
      , fEnd(other.fEnd)
    {
    }
    Entry& operator*() const noexcept { return *static_cast<Entry*>(fEntry); }
    Entry* operator->() const noexcept { return static_cast<Entry*>(fEntry); }
    TentryIterator& operator++() noexcept
    {
      fEntry = fEntry->fNext;
      if (!fEntry)
        skipEmpty();
      return *this;
    }
    TentryIterator operator++(int) noexcept
    {
      TentryIterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const TentryIterator& left, const TentryIterator& right) noexcept
    {
      return left.fEntry == right.fEntry;
    }
    friend bool operator!=(const TentryIterator& left, const TentryIterator& right) noexcept
    {
      return !(left == right);
    }

  private:
    template <class Other>
    friend class TentryIterator;

    void skipEmpty() noexcept
    {
      while (!fEntry && fBucket != fEnd)
        fEntry = *fBucket++;
    }

    ThashTableEntry* fEntry = nullptr;
    ThashTableEntry* const* fBucket = nullptr; // the next one to look at
    ThashTableEntry* const* fEnd = nullptr;
  };

  using iterator = TentryIterator<ThashTableEntry>;
  using const_iterator = TentryIterator<const ThashTableEntry>;

  /// The entries in bucket order, for a range `for`. A ThashTableOf hides these by ones that give its own entry type.
  iterator begin() noexcept { return beginAs<ThashTableEntry>(); }
  iterator end() noexcept { return {}; }
  const_iterator begin() const noexcept { return beginAs<const ThashTableEntry>(); }
  const_iterator end() const noexcept { return {}; }

protected:
  /// Puts \p entry at the head of its bucket and doubles the bucket count when the entry count has passed the
  /// high-water mark. False when there was no memory for that: the entry is in the table all the same.
  bool insertWithHash(ThashTableEntry* entry, TuInt32 hash) noexcept
  {
    ThashTableEntry*& head = fBuckets[tableIndex(fBucketCount, hash)];
    entry->fHash = hash;
    entry->fNext = head;
    head = entry;
    ++fEntryCount;
    return fEntryCount <= fHighWaterMark || fBucketCount > fMaximumCount / 2 || setTableSize(fBucketCount * 2);
  }

  /// The newest entry with \p hash for which \p matches, called with a `const Entry&`, is true; null if there is none.
  template <class Entry, class Matches>
  Entry* findEntry(TuInt32 hash, Matches matches) const
  {
    for (ThashTableEntry* entry = fBuckets[tableIndex(fBucketCount, hash)]; entry; entry = entry->fNext)
    {
      if (entry->fHash == hash && matches(static_cast<const Entry&>(*entry)))
        return static_cast<Entry*>(entry);
    }
    return nullptr;
  }

  /// Takes \p entry, which must be in the table, out of it. The entry is not freed and keeps its link; the table does
  /// not shrink.
  void unlinkEntry(ThashTableEntry* entry) noexcept;

  /// Moves all entries to \p n buckets, a power of two, whatever the limits and locks. False when there is no memory;
  /// nothing is changed then.
  bool setTableSize(unsigned int n) noexcept;

  /// Halves the bucket count, once, when the entry count is below the low-water mark and the minimum allows it. False
  /// when there was no memory for that.
  bool shrinkTable() noexcept;

  /// Forgets all entries without freeing them and goes back to the minimum of buckets. When there is no memory for new
  /// buckets the old ones are emptied and stay.
  void reinitializeTable() noexcept;

  template <class Entry>
  TentryIterator<Entry> beginAs() const noexcept
  {
    return {fBuckets, fBuckets + fBucketCount};
  }

private:
  friend class ThashTableIterator;
  struct TsizeLock;

  void setMarks() noexcept;

  TuInt32 fLowWaterMark;  // fBucketCount / 8
  TuInt32 fHighWaterMark; // fBucketCount * 3 / 8
  TuInt32 fMinimumCount;
  TuInt32 fMaximumCount;
  TuInt32 fEntryCount = 0;
  TuInt32 fBucketCount;
  TsizeLock* fSizeLock = nullptr; // null when unlocked
  ThashTableEntry** fBuckets;
};

/// The base of tables whose entries are all of class \p Entry, over ThashTable or a class that derives from it.
template <class Entry, class Base = ThashTable>
class ThashTableOf : public Base
{
public:
  using iterator = ThashTable::TentryIterator<Entry>;
  using const_iterator = ThashTable::TentryIterator<const Entry>;

  using Base::Base;

  iterator begin() noexcept { return this->template beginAs<Entry>(); }
  iterator end() noexcept { return {}; }
  const_iterator begin() const noexcept { return this->template beginAs<const Entry>(); }
  const_iterator end() const noexcept { return {}; }
};

/// A position in a table, for derived tables and their iterators that remove on the way. Not valid after a change of
/// the bucket count.
class FOUNDATION_API ThashTableIterator
{
public:
  /// Stands nowhere until one of the _first functions is called.
  explicit ThashTableIterator(ThashTable& table) noexcept;

  ThashTableEntry* entry() const noexcept { return fEntry; }
  TuInt32 bucket() const noexcept { return fBucket; }

  /// Goes to the first entry of the lowest bucket that has any. False, with a null entry, when the table is empty.
  bool _first() noexcept;

  /// Goes to the head of the bucket of \p hash, where a look-up begins. False, with a null entry, when it is empty.
  bool _first(TuInt32 hash) noexcept;

  /// Goes to the next entry in the chain, else to the next bucket that has one. False, with a null entry, at the end
  /// and after it. An entry that was removed but not yet freed still leads on.
  bool _next() noexcept;

  /// Takes \p entry out of the chain of \p bucket; nothing happens when it is not there. The entry is not freed and
  /// keeps its link; the table does not shrink.
  void _remove(ThashTableEntry* entry, TuInt32 bucket) noexcept;

private:
  ThashTableEntry* fEntry = nullptr;
  TuInt32 fBucket = 0;
  ThashTable& fTable;
};

static_assert(sizeof(ThashTableEntry) == 2 * sizeof(void*), "a link and a hash");
static_assert(sizeof(ThashTable) == 24 + 2 * sizeof(void*), "six counts and two addresses");
