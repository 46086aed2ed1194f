#include "Foundation/Memory/TfixedArena.h"

#include <algorithm>
#include <ostream>
#include <vector>

// The newest page has no slot left and no block is released, or purify mode is on.
void* TfixedArena::allocateSlowly(unsigned int bytes)
{
  if (TpureArena::usePurify())
    return TpureArena::allocate(*this, bytes);
  Tpage* page = allocateFixedPage(fBlockSize, std::max(fBlocksPerPage, 1U));
  if (!page)
    return nullptr;
  fNext = page->at(sizeof(Tpage) + kSlotHeader);
  fEnd = fNext + std::size_t(slotsOf(*page)) * (kSlotHeader + fBlockSize);
  return allocate(bytes);
}

TbaseArena::Tpage* TfixedArena::allocateFixedPage(unsigned int bytes, unsigned int count)
{
  if (!fFreePages && !keepNewPage(sizeof(Tpage) + TuInt64(count) * (TuInt64(kSlotHeader) + bytes)))
    return nullptr;
  Tpage* page = fFreePages; // each has at least one slot
  fFreePages = page->next();
  return new (page) Tpage(this, page->fSize);
}

unsigned char TfixedArena::preAllocate(unsigned int blocks)
{
  if (TpureArena::usePurify())
    return 1;
  TuInt64 free = 0;
  for (const Tpage* page = fFirstPage; page; page = page->next())
    free += slotsOf(*page) - page->fCount;
  for (const Tpage* page = fFreePages; page; page = page->next())
    free += slotsOf(*page);
  if (free >= blocks)
    return 1;
  const TuInt64 missing = std::max<TuInt64>(blocks - free, fBlocksPerPage);
  return keepNewPage(sizeof(Tpage) + missing * (TuInt64(kSlotHeader) + fBlockSize)) ? 1 : 0;
}

void TfixedArena::reset() noexcept
{
  fReleased = nullptr;
  fNext = fEnd = nullptr;
  TbaseArena::reset();
}

long TfixedArena::checkConsistency() const
{
  long faults = 0;
  std::vector<std::pair<Tpage*, unsigned>> pages; // and their released blocks
  TuInt64 released = 0, found = 0;
  const unsigned stride = kSlotHeader + fBlockSize;
  Tpage* before = nullptr;
  for (Tpage* page = fFirstPage; page; before = page, page = page->next())
  {
    if (!page->isSound(this, before))
      return faults + 1;
    const char* end = page == fFirstPage ? fNext - kSlotHeader : page->at(sizeof(Tpage) + slotsOf(*page) * stride);
    unsigned touched = 0;
    for (char* slot = page->at(sizeof(Tpage)); slot < end; slot += stride, ++touched)
      faults += getPage(slot + kSlotHeader) != page;
    faults += page->fCount > touched;
    released += touched - std::min<unsigned>(page->fCount, touched);
    pages.emplace_back(page, touched);
  }
  std::sort(pages.begin(), pages.end());
  for (Treleased* block = fReleased; block; block = Tpoison::peek(block->fNext))
  {
    auto after = std::upper_bound(pages.begin(), pages.end(), std::make_pair(reinterpret_cast<Tpage*>(block), ~0U));
    const std::size_t offset =
      after == pages.begin() ? 0 : std::size_t(reinterpret_cast<char*>(block) - (after - 1)->first->at(0));
    const std::size_t first = sizeof(Tpage) + kSlotHeader;
    if (offset < first || (offset - first) % stride || (offset - first) / stride >= (after - 1)->second ||
        ++found > released)
      return faults + 1;
  }
  return faults + (found != released);
}

void TfixedArena::debug(std::ostream& out) const
{
  out << "blocks of " << fBlockSize << " bytes, " << fBlocksPerPage << " a page; ";
  TbaseArena::debug(out);
}
