#include "Foundation/Container/TptrHashTable.h"

void TptrHashTable::insert(TptrHashTableEntry* entry, const void* key) noexcept
{
  entry->fKey = key;
  insertWithHash(entry, hash(key));
}

TptrHashTableEntry* TptrHashTable::remove(const void* key) noexcept
{
  TptrHashTableEntry* entry = find(key);
  if (entry)
  {
    unlinkEntry(entry);
    shrinkTable();
  }
  return entry;
}
