#include "Foundation/Memory/TbaseArena.h"

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TmallocAllocator.h"

#include <algorithm>
#include <ostream>

TbaseArena::TbaseArena(TpageType type, Tallocator& allocator) noexcept
  : fPageType(type)
  , fAllocator(&allocator)
{
}

TbaseArena::~TbaseArena()
{
  reset();
  destroyPages(0);
}

Tallocator& TbaseArena::processAllocator()
{
  return TmallocAllocator::process();
}

unsigned int TbaseArena::footPrint() const noexcept
{
  return unsigned(std::min<TuInt64>(fPageBytes, 0xFFFFFFFF));
}

void TbaseArena::reset() noexcept
{
  while (fPurified)
    TpureArena::deallocate(fPurified + 1);
  // The oldest page comes to stand first: a caller who repeats what he did finds each page where he needs it.
  while (Tpage* page = fFirstPage)
  {
    unlinkPage(page);
    page->setLinks(nullptr, fFreePages);
    fFreePages = page;
    Tpoison::poison(page + 1, page->fSize - sizeof(Tpage));
  }
}

void* TbaseArena::allocatePage(unsigned int size, const char* tag)
{
  Tallocator& allocator = fAllocator ? *fAllocator : processAllocator();
  void* page = allocator.allocate(size, tag);
  if (!page)
    return nullptr;
  if (TuInt64(reinterpret_cast<std::uintptr_t>(page)) >> 48) // further up than a page's links reach
  {
    allocator.free(page, size);
    return nullptr;
  }
  fPageBytes += size;
  return page;
}

void TbaseArena::freePage(void* page, unsigned int size)
{
  Tpoison::unpoison(page, size);
  fPageBytes -= size;
  (fAllocator ? *fAllocator : processAllocator()).free(page, size);
}

void TbaseArena::addPage(Tpage* page) noexcept
{
  page->setLinks(nullptr, fFirstPage);
  if (fFirstPage)
    fFirstPage->setLinks(page, fFirstPage->next());
  fFirstPage = page;
}

void TbaseArena::unlinkPage(Tpage* page) noexcept
{
  Tpage* prev = page->prev();
  Tpage* next = page->next();
  if (prev)
    prev->setLinks(prev->prev(), next);
  else
    fFirstPage = next;
  if (next)
    next->setLinks(prev, next->next());
}

TbaseArena::Tpage* TbaseArena::takeFreePage(unsigned int size) noexcept
{
  constexpr int kMostLooks = 8; // else many small pages would make every large request slow
  Tpage* before = nullptr;
  Tpage* page = fFreePages;
  for (int looks = 0; page && looks < kMostLooks; ++looks, before = page, page = page->next())
  {
    if (page->fSize < size)
      continue;
    if (before)
      before->setLinks(nullptr, page->next());
    else
      fFreePages = page->next();
    return page;
  }
  return nullptr;
}

TbaseArena::Tpage* TbaseArena::keepNewPage(TuInt64 size)
{
  void* memory = size > 0xFFFFFFFF ? nullptr : allocatePage(unsigned(size));
  if (!memory)
    return nullptr;
  Tpage* page = new (memory) Tpage(this, unsigned(size));
  unlinkPage(page);
  page->setLinks(nullptr, fFreePages);
  fFreePages = page;
  Tpoison::poison(page + 1, page->fSize - sizeof(Tpage));
  return page;
}

void TbaseArena::destroyPages(unsigned int extra) noexcept
{
  for (Tpage** list : {&fFirstPage, &fFreePages})
  {
    while (Tpage* page = *list)
    {
      *list = page->next();
      freePage(page, page->fSize + extra);
    }
  }
}

void TbaseArena::debug(std::ostream& out) const
{
  static const char* const kTypes[] = {"fixed", "variant", "stack", "compact"};
  out << "arena " << (fName ? fName : "without a name") << ": " << kTypes[fPageType] << ", " << footPrint()
      << " bytes held\n";
  unsigned kept = 0;
  for (const Tpage* page = fFreePages; page; page = page->next())
    ++kept;
  for (const Tpage* page = fFirstPage; page; page = page->next())
    out << "  page " << page << ": " << page->fSize << " bytes, " << page->fCount << " blocks in use\n";
  if (kept)
    out << "  " << kept << " pages kept for reuse\n";
}

// The page's own address counts too: a page that was copied elsewhere is no page.
TuInt16 TbaseArena::Tpage::checksum() const noexcept
{
  TuInt64 sum = fSize;
  for (const void* link : {static_cast<const void*>(this), static_cast<const void*>(arena()),
                           static_cast<const void*>(prev()), static_cast<const void*>(next())})
    sum = (sum ^ reinterpret_cast<std::uintptr_t>(link)) * 0x9E3779B97F4A7C15U;
  return TuInt16(sum >> 48);
}

void TbaseArena::Tpage::setLinks(Tpage* prev, Tpage* next) noexcept
{
  fPrev.set(prev);
  fNext.set(next);
  fCheck = checksum();
}

bool TbaseArena::Tpage::isSound(const TbaseArena* owner, const Tpage* before) const noexcept
{
  return fCheck == checksum() && arena() == owner && prev() == before;
}
