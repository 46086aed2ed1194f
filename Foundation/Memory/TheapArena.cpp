#include "Foundation/Memory/TheapArena.h"

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TvariantArena.h"

void TheapArena::deallocate(void* block) noexcept
{
  if (!block)
    return;
  Tpage* page = getHeader(block);
  if (!page)
  {
    TbaseArena* owner = TpureArena::getHeader(block)->fOwner;
    if (owner->pageType() == kVariant)
      static_cast<TvariantArena*>(owner)->forgetPurified(block);
    TpureArena::deallocate(block);
  }
  else if (page->isFixed())
    static_cast<TfixedArena*>(page->arena())->release(block, page);
  else if (page->isVariant())
    TvariantArena::deallocateHeader(block, page);
}

TbaseArena::Tpage* TheapArena::getHeader(void* block) noexcept
{
  const TuInt32 distance = Tpoison::peek(static_cast<const TuInt32*>(block)[-1]);
  return distance == TpureArena::kMagic ? nullptr : reinterpret_cast<Tpage*>(static_cast<char*>(block) - distance);
}
