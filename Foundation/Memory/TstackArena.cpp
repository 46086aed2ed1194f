#include "Foundation/Memory/TstackArena.h"

#include <algorithm>

TstackArena::TstackArena(unsigned int blockSize, unsigned int count, Tallocator& allocator) noexcept
  : TbaseArena(kStack, allocator)
  , fPageSize(unsigned(std::min<TuInt64>(TuInt64(round8(blockSize)) * count, 0xFFFFFFF8)))
{
}

void* TstackArena::allocate(unsigned int bytes, unsigned int count)
{
  const TuInt64 all = TuInt64(round8(bytes)) * count;
  return all < 0xFFFFFFF8 ? allocate(unsigned(all)) : nullptr;
}

// The newest page has no room, or there is none.
void* TstackArena::allocateSlowly(unsigned int bytes)
{
  if (bytes == 0)
    return nullptr;
  if (TpureArena::usePurify())
    return TpureArena::allocate(*this, bytes);
  const TuInt64 least = sizeof(Tpage) + TuInt64(round8(bytes));
  if (least > 0xFFFFFFFF)
    return nullptr;
  Tpage* page = takeFreePage(unsigned(least));
  if (!page)
  {
    if (!keepNewPage(sizeof(Tpage) + TuInt64(std::max(round8(bytes), fPageSize))))
      return nullptr;
    page = takeFreePage(unsigned(least));
  }
  page = new (page) Tpage(this, page->fSize);
  page->fMark = sizeof(Tpage);
  return allocate(bytes);
}

unsigned char TstackArena::preAllocate(unsigned int bytes)
{
  if (TpureArena::usePurify() || (fFirstPage && fFirstPage->fSize - fFirstPage->fMark >= round8(bytes)))
    return 1;
  const TuInt64 size = sizeof(Tpage) + TuInt64(std::max(round8(bytes), fPageSize));
  return (fFreePages && fFreePages->fSize >= size) || keepNewPage(size) ? 1 : 0;
}
