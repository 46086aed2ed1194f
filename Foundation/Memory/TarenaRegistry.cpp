#include "Foundation/Memory/TarenaRegistry.h"

#include <cstdlib>

TarenaRegistry::Tentry* TarenaRegistry::fEntries = nullptr;
unsigned int TarenaRegistry::fCount = 0;

unsigned int TarenaRegistry::count() noexcept
{
  return fCount;
}

const TarenaRegistry::Tentry& TarenaRegistry::entry(unsigned int index) noexcept
{
  return fEntries[index];
}

unsigned char TarenaRegistry::add(TbaseArena* arena, TbaseArena::TpageType tag) noexcept
{
  Tentry* entries = static_cast<Tentry*>(std::realloc(fEntries, (std::size_t(fCount) + 1) * sizeof(Tentry)));
  if (!entries)
    return 0;
  fEntries = entries;
  fEntries[fCount++] = {arena, tag};
  return 1;
}

void TarenaRegistry::remove(const TbaseArena* arena) noexcept
{
  for (unsigned i = fCount; i-- > 0;)
  {
    if (fEntries[i].fArena != arena)
      continue;
    fEntries[i] = fEntries[--fCount];
    if (fCount == 0)
    {
      std::free(fEntries);
      fEntries = nullptr;
    }
    return;
  }
}
