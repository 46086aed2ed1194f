#include "Foundation/Container/TptrHashTable.h"

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
