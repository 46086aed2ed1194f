#include "Foundation/Memory/TcompactArena.h"

#include "Foundation/Memory/TarenaRegistry.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <ostream>

namespace {

// The first word of a bitmap that is not all ones; `end` when there is none.
TuInt32* firstWithRoom(TuInt32* at, const TuInt32* end) noexcept
{
  for (; end - at >= 16; at += 16)
  {
    TuInt32 all = at[0];
    for (int i = 1; i < 16; ++i)
      all &= at[i];
    if (~all)
      break;
  }
  while (at != end && !~*at)
    ++at;
  return at;
}

} // namespace

TcompactArena::TcompactArena(unsigned int blockSize, unsigned int pageBytes, Tallocator& allocator,
                             const char* name) noexcept
  : TcompactArena(blockSize, pageBytes, name)
{
  static_assert(sizeof(TcompactPage) == kPageHeader, "compact page headers are the same in every build");
  fAllocator = &allocator;
}

TcompactArena::~TcompactArena()
{
  TarenaRegistry::remove(this);
  destroyPages(bitmapBytes());
  std::free(fByAddress);
}

// What the fast path could not do.
void* TcompactArena::allocateSlowly(unsigned int bytes)
{
  if (fCurrent && fCurrent->fCount < fCapacity)
    return take(fCurrent);
  if (fRoomy)
  {
    Tpage* page = fFirstPage;
    while (page->fCount == fCapacity)
      page = page->next();
    fCurrent = static_cast<TcompactPage*>(page);
    return take(fCurrent);
  }
  if (TpureArena::usePurify())
    return std::malloc(bytes);
  TcompactPage* page = reusePage();
  if (!page)
    return nullptr;
  fCurrent = page;
  return take(page);
}

// A block of a page that is not full.
void* TcompactArena::take(TcompactPage* page)
{
  long index = 0;
  void* block = page->allocateSearch(&index);
  if (++page->fCount == fCapacity)
    --fRoomy;
  Tpoison::unpoison(block, fBlockSize);
  return block;
}

void* TcompactArena::TcompactPage::allocateSearch(long* index) noexcept
{
  const TcompactArena* owner = static_cast<const TcompactArena*>(arena());
  TuInt32* words = bitmap();
  TuInt32* end = words + (fCapacity + 31) / 32;
  TuInt32* cursor = std::min(words + fMark / 32, end);
  const auto nearRelease = [&] {
    return words + (owner->fShift ? fReleased >> owner->fShift : fReleased / owner->fBlockSize) / 32;
  };
  bool movesCursor = false;
  TuInt32* word = nullptr;
  if (fCount + 1 == fCapacity && ~*nearRelease()) // the only free one: a page that is used up and released from
    word = nearRelease();
  else if (word = firstWithRoom(cursor, end); word != end)
    movesCursor = true;
  else
  {
    fMark = fCapacity;                    // no need to look there again
    if (owner->fShift && ~*nearRelease()) // for other sizes the division costs as much as a search that is short
      word = nearRelease();
    else if (word = firstWithRoom(words, cursor); word != cursor)
      movesCursor = true;
    else
      return nullptr;
  }
  const unsigned bit = unsigned(std::countr_one(*word));
  *word |= TuInt32(1) << bit;
  *index = long(word - words) * 32 + long(bit);
  if (movesCursor) // to where further ones are likely
    fMark = TuInt32(*index) + 1;
  return base() + std::size_t(*index) * owner->fBlockSize;
}

// Bits behind the last block count as used.
void TcompactArena::TcompactPage::clearBitmap() noexcept
{
  const std::size_t count = (fCapacity + 31) / 32;
  std::fill(bitmap(), bitmap() + count, 0U);
  if (fCapacity % 32)
    bitmap()[count - 1] = ~TuInt32(0) << fCapacity % 32;
}

unsigned char TcompactArena::deallocateSlowly(void* block)
{
  TcompactPage* page = pageOf(block);
  if (page && release(page, block))
    return 1;
  if (!block)
    return 0;
  if (TpureArena::usePurify())
  {
    std::free(block);
    return 1;
  }
  static bool searching = false;
  if (searching)
    return 0;
  searching = true;
  unsigned char found = 0;
  for (unsigned i = 0; i < TarenaRegistry::count() && !found; ++i)
  {
    const TarenaRegistry::Tentry& entry = TarenaRegistry::entry(i);
    if (entry.fTag == kCompact && entry.fArena != this && entry.fArena->name() == name())
      found = static_cast<TcompactArena*>(entry.fArena)->deallocate(block);
  }
  searching = false;
  return found;
}

// The last page that begins before the block. Without branches, which nobody could foretell.
TcompactArena::TcompactPage* TcompactArena::pageOf(const void* block) const noexcept
{
  if (fPageCount == 0)
    return nullptr;
  TcompactPage** page = fByAddress;
  for (unsigned count = fPageCount; count > 1;)
  {
    const unsigned half = count / 2;
    page += std::size_t(half) & -std::size_t(!std::less<>()(block, page[half]));
    count -= half;
  }
  return std::less<>()(block, *page) ? nullptr : *page;
}

// A new page among the saved ones.
TcompactArena::TcompactPage* TcompactArena::makePage()
{
  const TuInt64 bytes = TuInt64(fPageSize) + bitmapBytes();
  if (fCapacity == 0 || bytes > 0xFFFFFFFF)
    return nullptr;
  if (!fRegistered && !TarenaRegistry::add(this, kCompact))
    return nullptr;
  fRegistered = true;
  if ((fPageCount & (fPageCount - 1)) == 0) // the table is full
  {
    const std::size_t room = std::max<std::size_t>(2 * std::size_t(fPageCount), 1);
    void* table = std::realloc(fByAddress, room * sizeof *fByAddress);
    if (!table)
      return nullptr;
    fByAddress = static_cast<TcompactPage**>(table);
  }
  void* memory = allocatePage(unsigned(bytes));
  if (!memory)
    return nullptr;
  TcompactPage* page = new (memory) TcompactPage(this, fPageSize);
  TbaseArena::unlinkPage(page);
  page->setLinks(nullptr, fFreePages);
  fFreePages = page;
  page->clearBitmap();
  Tpoison::poison(page->base(), page->fBlockBytes);
  TcompactPage** place = std::upper_bound(fByAddress, fByAddress + fPageCount, page, std::less<>());
  std::copy_backward(place, fByAddress + fPageCount, fByAddress + fPageCount + 1);
  *place = page;
  ++fPageCount;
  return page;
}

TcompactArena::TcompactPage* TcompactArena::reusePage()
{
  if (!fFreePages && !makePage())
    return nullptr;
  TcompactPage* page = static_cast<TcompactPage*>(fFreePages);
  fFreePages = page->next();
  addPage(page);
  ++fRoomy;
  return page;
}

void TcompactArena::savePage(TcompactPage* page) noexcept
{
  unlinkPage(page);
  page->fCount = 0;
  page->fMark = 0;
  page->setLinks(nullptr, fFreePages);
  fFreePages = page;
}

void TcompactArena::unlinkPage(TcompactPage* page) noexcept
{
  TbaseArena::unlinkPage(page);
  if (page->fCount < fCapacity)
    --fRoomy;
  if (fCurrent == page)
    fCurrent = nullptr;
}

void TcompactArena::deletePage(TcompactPage* page)
{
  TcompactPage** end = fByAddress + fPageCount;
  TcompactPage** place = std::lower_bound(fByAddress, end, page, std::less<>());
  std::copy(place + 1, end, place);
  --fPageCount;
  freePage(page, fPageSize + bitmapBytes());
}

void TcompactArena::purgePage()
{
  while (fFreePages)
  {
    TcompactPage* page = static_cast<TcompactPage*>(fFreePages);
    fFreePages = page->next();
    deletePage(page);
  }
}

unsigned char TcompactArena::preAllocate(unsigned int blocks)
{
  if (TpureArena::usePurify())
    return 1;
  TuInt64 free = 0;
  for (const Tpage* page = fFirstPage; page; page = page->next())
    free += fCapacity - page->fCount;
  for (const Tpage* page = fFreePages; page; page = page->next())
    free += fCapacity;
  for (; free < blocks; free += fCapacity)
  {
    if (!makePage())
      return 0;
  }
  return 1;
}

void TcompactArena::reset() noexcept
{
  while (TcompactPage* page = static_cast<TcompactPage*>(fFirstPage))
  {
    page->clearBitmap();
    Tpoison::poison(page->base(), page->fBlockBytes);
    savePage(page);
  }
}

void TcompactArena::purge()
{
  for (unsigned i = 0; i < TarenaRegistry::count(); ++i)
  {
    const TarenaRegistry::Tentry& entry = TarenaRegistry::entry(i);
    if (entry.fTag == kCompact)
      static_cast<TcompactArena*>(entry.fArena)->purgePage();
  }
}

long TcompactArena::checkConsistency() const
{
  long faults = 0;
  unsigned pages = 0, roomy = 0;
  bool hasCurrent = !fCurrent;
  const auto isPage = [this](const TcompactPage* page) { // one that can be read
    return std::binary_search(fByAddress, fByAddress + fPageCount, page, std::less<>());
  };
  for (const Tpage* list : {fFirstPage, fFreePages})
  {
    const Tpage* before = nullptr;
    for (const Tpage* each = list; each; before = each, each = each->next())
    {
      TcompactPage* page = static_cast<TcompactPage*>(const_cast<Tpage*>(each));
      if (!isPage(page) || !page->isSound(this, list == fFirstPage ? before : nullptr) || ++pages > fPageCount ||
          page->fCapacity != fCapacity || page->fBlockBytes != fCapacity * fBlockSize)
        return faults + 1;
      unsigned used = 0;
      for (unsigned i = 0; i < bitmapBytes() / 4; ++i)
        used += unsigned(std::popcount(page->bitmap()[i]));
      used -= (32 - fCapacity % 32) % 32; // behind the last block
      faults += used != page->fCount || (used && list == fFreePages);
      faults += page->fMark > fCapacity || page->fReleased >= page->fBlockBytes;
      roomy += list == fFirstPage && page->fCount < fCapacity;
      hasCurrent |= list == fFirstPage && page == fCurrent;
    }
  }
  return faults + (pages != fPageCount) + (roomy != fRoomy) + !hasCurrent;
}

void TcompactArena::debug(std::ostream& out)
{
  for (unsigned i = 0; i < TarenaRegistry::count(); ++i)
  {
    const TarenaRegistry::Tentry& entry = TarenaRegistry::entry(i);
    if (entry.fTag != kCompact)
      continue;
    const TcompactArena* arena = static_cast<TcompactArena*>(entry.fArena);
    out << "compact, blocks of " << arena->fBlockSize << " bytes, " << arena->fCapacity << " a page; ";
    arena->TbaseArena::debug(out);
  }
}
