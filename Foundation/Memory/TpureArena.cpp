#include "Foundation/Memory/TpureArena.h"

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TbaseArena.h"

#include <cstdlib>

unsigned char TpureArena::usePurify() noexcept
{
  static const unsigned char inUse = std::getenv("PURIFY") ? 1 : 0;
  return inUse;
}

void* TpureArena::allocate(TbaseArena& owner, unsigned int size) noexcept
{
  const std::size_t whole = sizeof(Tpurified) + std::size_t(size);
  if (whole < size)
    return nullptr;
  Tpurified* record = static_cast<Tpurified*>(std::malloc(whole));
  if (!record)
    return nullptr;
  record->fOwner = &owner;
  record->fNext = owner.fPurified;
  record->fLink = &owner.fPurified;
  record->fSize = size;
  record->fMagic = kMagic;
  if (record->fNext)
    record->fNext->fLink = &record->fNext;
  owner.fPurified = record;
  return record + 1;
}

bool TpureArena::isPurified(const void* block) noexcept
{
  return Tpoison::peek(static_cast<const TuInt32*>(block)[-1]) == kMagic;
}

void TpureArena::deallocate(void* block) noexcept
{
  Tpurified* record = getHeader(block);
  *record->fLink = record->fNext;
  if (record->fNext)
    record->fNext->fLink = record->fLink;
  record->fMagic = 0;
  std::free(record);
}
