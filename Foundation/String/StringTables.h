/// \file
/// TstringHashTable and TnameTable: tables that find a string or a type record by a string; TstringKeyTable for others.
///
/// Use them where many texts are looked up and no order is needed. A look-up costs the hash of the key and, as a rule,
/// one comparison. The trap: keys that differ in their last characters only, and there in digits, have few different
/// hashes (see Tstring::hash): of a hundred thousand like "node1", "node2" each is compared with hundreds. Tname is
/// made for those. What they can do stands in TkeyedTable.h.

#pragma once

#include "Foundation/Container/TkeyedTable.h"
#include "Foundation/String/Tstring.h"

#include <utility>

class Tmetaclass;

/// A key and a value in a table.
template <class X>
class TstringKeyEntry : public ThashTableEntry
{
public:
  using Key = Tstring;
  using Value = X;

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

  static TuInt32 hash(const Tstring& key) noexcept { return key.hash(); }
  bool matches(const Tstring& key) const noexcept { return fKey == key; }

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
/// Keys are equal byte by byte. Keys and values are shared as strings are.
template <class Value>
class TstringKeyTable : public TkeyedTable<TstringKeyEntry<Value>>
{
public:
  using TkeyedTable<TstringKeyEntry<Value>>::TkeyedTable;
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
