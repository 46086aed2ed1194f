#include "Foundation/Iff/TiffTable.h"

#include "Foundation/Debug/Texception.h"

#include <new>

TiffTable::TiffTable(unsigned int initialSize, unsigned int growth)
  : ThashTable(initialSize, growth)
{
}

TiffTable::~TiffTable()
{
  clearall();
}

void TiffTable::insert(TiffTag key, Tmetaclass* value)
{
  Entry* made = new (std::nothrow) Entry;
  if (!made)
    throw TmemoryException();
  made->fValue = value;
  insertWithHash(made, key.value()); // which works without room to grow, too
}

unsigned char TiffTable::insertUnique(TiffTag key, Tmetaclass* value)
{
  if (entry(key))
    return 0;
  insert(key, value);
  return 1;
}

void TiffTable::insertReplace(TiffTag key, Tmetaclass* value)
{
  if (Entry* found = entry(key))
    found->fValue = value;
  else
    insert(key, value);
}

Tmetaclass** TiffTable::find(TiffTag key) noexcept
{
  Entry* found = entry(key);
  return found ? &found->fValue : nullptr;
}

Tmetaclass* const* TiffTable::find(TiffTag key) const noexcept
{
  const Entry* found = entry(key);
  return found ? &found->fValue : nullptr;
}

unsigned char TiffTable::find(TiffTag key, Tmetaclass*& value) const noexcept
{
  const Entry* found = entry(key);
  if (found)
    value = found->fValue;
  return found != nullptr;
}

unsigned char TiffTable::remove(TiffTag key) noexcept
{
  Entry* found = entry(key);
  if (!found)
    return 0;
  unlinkEntry(found);
  delete found;
  shrinkTable();
  return 1;
}

void TiffTable::reset() noexcept
{
  clearall();
  reinitializeTable();
}

void TiffTable::clearall() noexcept
{
  for (Iterator at(*this); at.removeThenNext();)
  {
  }
}

TiffTable::Entry* TiffTable::entry(TiffTag key) const noexcept
{
  return findEntry<Entry>(key.value(), [](const Entry&) { return true; });
}

unsigned char TiffTable::Iterator::getKey(TuInt32& key) const noexcept
{
  if (isDone())
    return 0;
  key = this->key();
  return 1;
}

unsigned char TiffTable::Iterator::getData(Tmetaclass*& data) const noexcept
{
  if (isDone())
    return 0;
  data = this->data();
  return 1;
}

bool TiffTable::Iterator::removeThenNext() noexcept
{
  Entry* removed = static_cast<Entry*>(entry());
  if (!removed)
    return false;
  _remove(removed, bucket());
  const bool more = _next();
  delete removed;
  return more;
}

void TiffTable::Iterator::appendAllTo(TiffTable& other) const
{
  if (&other == &fTable)
    return;
  for (const Entry& each : fTable)
    other.insert(each.key(), each.fValue);
}
