#include "Foundation/Memory/TvariantArena.h"

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TarenaRegistry.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <ostream>
#include <vector>

namespace {

constexpr unsigned kHeader = 16;
constexpr unsigned kLeastRest = 40; // what is cut off a block: a header and a useful payload
constexpr unsigned kMostPayload = 0x7FFFFFF8;
constexpr unsigned kBefore = 0, kBehind = 1; // of fIsFree

} // namespace

struct [[gnu::may_alias]] TvariantArena::Tfree : Tvariant
{
  TuInt32 fPrevLow;
  TuInt16 fNextHigh;
  TuInt16 fPrevHigh;
  TuInt64 fStamp; // from kExactClasses on
  // Where a class has several chains, the first block of one links to those of the others.
  Tfree* fNextChain;
  Tfree* fPrevChain;

  unsigned payload() const noexcept { return Tpoison::peek(fSize) >> 1; }
  bool isFree() const noexcept { return Tpoison::peek(fSize) & 1; }
  TuInt64 stamp() const noexcept { return Tpoison::peek(fStamp); }
  Tfree* nextChain() const noexcept { return Tpoison::peek(fNextChain); }
  Tfree* next() const noexcept { return join(Tpoison::peek(fNextHigh), Tpoison::peek(fNextLow)); }
  Tfree* prev() const noexcept { return join(Tpoison::peek(fPrevHigh), Tpoison::peek(fPrevLow)); }
  // These only write: nobody waits for a block that is in no cache.
  void setNext(const Tfree* to) noexcept
  {
    Tpoison::poke(fNextLow, TuInt32(reinterpret_cast<std::uintptr_t>(to)));
    Tpoison::poke(fNextHigh, TuInt16(TuInt64(reinterpret_cast<std::uintptr_t>(to)) >> 32));
  }
  void setPrev(const Tfree* to) noexcept
  {
    Tpoison::poke(fPrevLow, TuInt32(reinterpret_cast<std::uintptr_t>(to)));
    Tpoison::poke(fPrevHigh, TuInt16(TuInt64(reinterpret_cast<std::uintptr_t>(to)) >> 32));
  }

private:
  static Tfree* join(TuInt64 high, TuInt32 low) noexcept
  {
    return reinterpret_cast<Tfree*>(std::uintptr_t(high << 32 | low));
  }
};

TvariantArena::TvariantArena(unsigned int pageSize, unsigned int fitSearchLimit, Tallocator& allocator,
                             const char* name, unsigned char savesEmptyPages, unsigned char triesTailFirst) noexcept
  : TheapArena(kVariant, allocator)
  , fFitSearchLimit(fitSearchLimit)
  , fSavesEmptyPages(savesEmptyPages)
  , fTriesTailFirst(triesTailFirst)
{
  static_assert(sizeof(Tvariant) == kHeader, "the same in every build");
  fName = name;
  setVariantPageSize(pageSize);
  TarenaRegistry::add(this, kVariant);
}

TvariantArena::~TvariantArena()
{
  TarenaRegistry::remove(this);
}

void TvariantArena::setVariantPageSize(unsigned int bytes, unsigned int blockSize) noexcept
{
  const TuInt64 size = bytes + TuInt64(bytes / std::max(blockSize, 1U)) * kHeader;
  fVariantPageSize = round8(unsigned(std::min<TuInt64>(size, 0xFFFFFFFF)));
}

unsigned int TvariantArena::freeListIndex(unsigned int payload) noexcept
{
  const unsigned units = payload / 8;
  if (units < 18)
    return units;
  const unsigned halvings = unsigned(std::bit_width(units)) - 4;
  return 18 + 4 * halvings + ((units >> halvings) - 8) / 4;
}

unsigned int TvariantArena::classOf(unsigned int payload) noexcept
{
  const unsigned units = payload / 8;
  if (units < kExactClasses)
    return units;
  // The bits behind the first say which list of the band and which class of the list it is.
  const unsigned width = unsigned(std::bit_width(units));
  const unsigned fraction = width > 6 ? units >> (width - 6) : units << (6 - width);
  return kExactClasses + (width - 5) * 2 * kClassesPerList + (fraction & 31);
}

unsigned int TvariantArena::nextUsedClass(unsigned int from) const noexcept
{
  if (from >= kClasses)
    return kClasses;
  unsigned word = from / 64;
  TuInt64 bits = fUsed[word] & ~TuInt64(0) << from % 64;
  while (!bits)
  {
    if (++word == std::size(fUsed))
      return kClasses;
    bits = fUsed[word];
  }
  return word * 64 + unsigned(std::countr_zero(bits));
}

// Adds a free block at the head of its list.
void TvariantArena::push(Tvariant* added) noexcept
{
  Tfree* block = static_cast<Tfree*>(added);
  const unsigned payload = block->payload();
  const unsigned index = classOf(payload);
  Tfree* chain = fHeads[index];
  Tfree* prevChain = nullptr;
  if (index >= kExactClasses)
  {
    fLatest[index] = ++fStamp;
    Tpoison::poke(block->fStamp, fStamp);
  }
  if (index >= kSingleClasses)
  {
    while (chain && chain->payload() != payload)
    {
      prevChain = chain;
      chain = chain->nextChain();
    }
    // The block takes the place of the first one in its chain, or founds a chain at the end.
    linkChain(index, prevChain, block, chain ? chain->nextChain() : nullptr);
  }
  else
    fHeads[index] = block;
  fUsed[index / 64] |= TuInt64(1) << index % 64;
  block->setPrev(nullptr);
  block->setNext(chain);
  if (chain)
    chain->setPrev(block);
}

void TvariantArena::unlink(Tvariant* removed) noexcept
{
  Tfree* block = static_cast<Tfree*>(removed);
  Tfree* prev = block->prev();
  Tfree* next = block->next();
  if (next)
    next->setPrev(prev);
  if (prev)
  {
    prev->setNext(next);
    return;
  }
  const unsigned index = classOf(block->payload());
  if (index >= kSingleClasses)
  {
    Tfree* prevChain = Tpoison::peek(block->fPrevChain);
    Tfree* nextChain = block->nextChain();
    if (next)
      linkChain(index, prevChain, next, nextChain);
    else
    {
      if (prevChain)
        Tpoison::poke(prevChain->fNextChain, nextChain);
      else
        fHeads[index] = nextChain;
      if (nextChain)
        Tpoison::poke(nextChain->fPrevChain, prevChain);
    }
    if (fLatest[index] == block->stamp())
    {
      fLatest[index] = 0;
      for (Tfree* chain = fHeads[index]; chain; chain = chain->nextChain())
        fLatest[index] = std::max(fLatest[index], chain->stamp());
    }
  }
  else
  {
    fHeads[index] = next;
    if (index >= kExactClasses && next)
      fLatest[index] = next->stamp();
  }
  if (!fHeads[index])
    fUsed[index / 64] &= ~(TuInt64(1) << index % 64);
}

// Puts the first block of a chain between those of two others.
void TvariantArena::linkChain(unsigned int index, Tfree* prev, Tfree* block, Tfree* next) noexcept
{
  Tpoison::poke(block->fPrevChain, prev);
  Tpoison::poke(block->fNextChain, next);
  if (next)
    Tpoison::poke(next->fPrevChain, block);
  if (prev)
    Tpoison::poke(prev->fNextChain, block);
  else
    fHeads[index] = block;
}

// The first block of the first list that has one with this payload.
TvariantArena::Tfree* TvariantArena::find(unsigned int payload, unsigned int limit) const noexcept
{
  const unsigned own = classOf(payload);
  for (unsigned index = nextUsedClass(own); index < kClasses;)
  {
    if (index < kExactClasses)
      return fHeads[index];
    if (limit == 0)
      return nullptr;
    const unsigned first = index - (index - kExactClasses) % kClassesPerList;
    const unsigned end = first + kClassesPerList;
    // The latest of this class that fits, then the larger classes, in which all do.
    Tfree* latest = nullptr;
    TuInt64 stamp = 0;
    if (index == own)
    {
      for (Tfree* chain = fHeads[index]; chain; chain = index < kSingleClasses ? nullptr : chain->nextChain())
      {
        if (chain->payload() >= payload && chain->stamp() > stamp)
        {
          latest = chain;
          stamp = chain->stamp();
        }
      }
      index = nextUsedClass(index + 1);
    }
    unsigned best = kClasses;
    for (; index < end; index = nextUsedClass(index + 1))
    {
      if (fLatest[index] > stamp)
      {
        best = index;
        stamp = fLatest[index];
      }
    }
    if (best < kClasses)
    {
      latest = fHeads[best];
      while (best >= kSingleClasses && latest->stamp() != stamp)
        latest = latest->nextChain();
    }
    if (latest && (first > own || limit == kNoLimit || isWithin(fHeads + first, latest->stamp(), limit)))
      return latest;
  }
  return nullptr;
}

// Whether a search from the head of the list whose classes begin at `heads` looks at no more than `limit` blocks before
// it comes to one with this stamp.
bool TvariantArena::isWithin(Tfree* const* heads, TuInt64 stamp, unsigned int limit) const noexcept
{
  for (unsigned i = 0; i < kClassesPerList; ++i)
  {
    const bool isSingle = heads + i < fHeads + kSingleClasses;
    for (Tfree* chain = heads[i]; chain; chain = isSingle ? nullptr : chain->nextChain())
    {
      for (Tfree* block = chain; block && block->stamp() >= stamp; block = block->next())
      {
        if (limit-- == 0)
          return false;
      }
    }
  }
  return true;
}

TvariantArena::Tvariant* TvariantArena::following(Tpage* page, Tvariant* block) noexcept
{
  if (reinterpret_cast<char*>(block) == page->at(page->fMark))
    return nullptr;
  return reinterpret_cast<Tvariant*>(reinterpret_cast<char*>(block + 1) + (Tpoison::peek(block->fSize) >> 1));
}

TvariantArena::Tvariant* TvariantArena::before(Tvariant* block) noexcept
{
  const TuInt32 size = Tpoison::peek(block->fPrevSize);
  return size ? reinterpret_cast<Tvariant*>(reinterpret_cast<char*>(block) - size) - 1 : nullptr;
}

// Tells the block behind a free one, or one in use, which must be in use itself. It only writes there.
void TvariantArena::tellFollowing(Tpage* page, Tvariant* block) noexcept
{
  if (Tvariant* next = following(page, block))
  {
    const TuInt32 word = Tpoison::peek(block->fSize);
    Tpoison::poke(next->fPrevSize, word >> 1);
    Tpoison::poke(next->fIsFree[kBefore], TuInt8(word & 1));
  }
}

void* TvariantArena::allocate(unsigned int bytes, unsigned int count, unsigned int fitSearchLimit)
{
  const TuInt64 all = TuInt64(bytes) * count;
  return all <= kMostPayload ? allocateWithin(unsigned(all), fitSearchLimit) : nullptr;
}

void* TvariantArena::allocateWithin(unsigned int bytes, unsigned int limit)
{
  if (bytes == 0 || bytes > kMostPayload)
    return nullptr;
  const unsigned payload = round8(bytes);
  Tvariant* block = nullptr;
  if (fRover && fTriesTailFirst)
  {
    Tfree* tail = reinterpret_cast<Tfree*>(fRover->at(fRover->fMark));
    if (tail->isFree() && tail->payload() >= payload)
      block = tail;
  }
  if (!block)
    block = find(payload, limit);
  if (!block)
  {
    if (TpureArena::usePurify())
    {
      void* purified = TpureArena::allocate(*this, bytes);
      fAllocatedMemory += purified ? payload : 0;
      return purified;
    }
    block = payload + kHeader <= fVariantPageSize ? allocateVariantPage(payload) : allocateVariantPageForBlock(payload);
    if (!block)
      return nullptr;
  }
  Tpage* page = reinterpret_cast<Tpage*>(reinterpret_cast<char*>(block + 1) - Tpoison::peek(block->fDistance));
  unlink(block);
  Tpoison::poke(block->fIsFree[kBefore], TuInt8(0)); // free blocks have no free neighbours
  if (Tvariant* prev = before(block))
    Tpoison::poke(prev->fIsFree[kBehind], TuInt8(0));
  use(page, block, payload);
  ++page->fCount;
  return block + 1;
}

TvariantArena::Tvariant* TvariantArena::allocateVariantPage(unsigned int payload)
{
  return openPage(sizeof(Tpage) + TuInt64(fVariantPageSize), payload);
}

TvariantArena::Tvariant* TvariantArena::allocateVariantPageForBlock(unsigned int payload)
{
  return openPage(sizeof(Tpage) + TuInt64(kHeader) + payload, payload);
}

// A page, new or kept, with room for the payload as one free block.
TvariantArena::Tvariant* TvariantArena::openPage(TuInt64 size, unsigned int payload)
{
  const TuInt64 least = sizeof(Tpage) + TuInt64(kHeader) + payload;
  if (size > sizeof(Tpage) + kHeader + kMostPayload)
    return nullptr;
  Tpage* page = takeFreePage(unsigned(least));
  if (!page)
  {
    if (!keepNewPage(size))
      return nullptr;
    page = takeFreePage(unsigned(least));
  }
  page = new (page) Tpage(this, page->fSize);
  page->fMark = sizeof(Tpage);
  Tvariant* block = reinterpret_cast<Tvariant*>(page + 1);
  Tpoison::poke(block->fPrevSize, TuInt32(0));
  Tpoison::poke(block->fDistance, TuInt32(sizeof(Tpage) + kHeader));
  Tpoison::poke(block->fSize, TuInt32((page->fSize - sizeof(Tpage) - kHeader) << 1 | 1));
  push(block);
  return block;
}

// Makes a block that is in no list one in use, and frees what it has too much.
void TvariantArena::use(Tpage* page, Tvariant* block, unsigned int payload) noexcept
{
  const unsigned whole = Tpoison::peek(block->fSize) >> 1;
  fRover = page;
  if (whole - payload >= kLeastRest)
  {
    const bool isLast = !following(page, block);
    char* rest = reinterpret_cast<char*>(block + 1) + payload;
    Tvariant* remainder = reinterpret_cast<Tvariant*>(rest);
    Tpoison::poke(remainder->fPrevSize, TuInt32(payload));
    Tpoison::poke(remainder->fSize, TuInt32((whole - payload - kHeader) << 1 | 1));
    Tpoison::poke(remainder->fDistance, TuInt32(Tpoison::peek(block->fDistance) + payload + kHeader));
    if (isLast)
      page->fMark = TuInt32(rest - page->at(0));
    else
      tellFollowing(page, remainder);
    Tpoison::poke(block->fSize, TuInt32(payload << 1));
    Tpoison::poke(block->fIsFree[kBehind], TuInt8(1));
    push(remainder);
  }
  else
  {
    payload = whole;
    Tpoison::poke(block->fSize, TuInt32(payload << 1));
    Tpoison::poke(block->fIsFree[kBehind], TuInt8(0));
    tellFollowing(page, block);
    if (page->at(page->fMark) == reinterpret_cast<char*>(block))
      fRover = nullptr;
  }
  fAllocatedMemory += payload;
  Tpoison::unpoison(block + 1, payload);
}

void* TvariantArena::reallocate(void* old, unsigned int bytes)
{
  if (!old)
    return allocate(bytes);
  if (bytes == 0)
  {
    deallocate(old);
    return nullptr;
  }
  if (bytes > kMostPayload)
    return nullptr;
  const unsigned payload = round8(bytes);
  const unsigned had = sizeOfBlock(old);
  if (Tpage* page = getHeader(old))
  {
    if (payload <= had && had - payload < kLeastRest)
      return old;
    Tvariant* block = static_cast<Tvariant*>(old) - 1;
    unsigned whole = had;
    if (Tpoison::peek(block->fIsFree[kBehind]))
    {
      Tvariant* next = following(page, block);
      const unsigned joined = had + kHeader + (Tpoison::peek(next->fSize) >> 1);
      if (joined >= payload)
      {
        unlink(next);
        if (!following(page, next))
          page->fMark = TuInt32(reinterpret_cast<char*>(block) - page->at(0));
        whole = joined;
      }
    }
    if (whole >= payload)
    {
      Tpage* rover = fRover;
      fAllocatedMemory -= had;
      Tpoison::poke(block->fSize, TuInt32(whole << 1));
      Tpoison::poison(old, whole);
      use(page, block, payload);
      fRover = rover; // this was no allocation
      return old;
    }
  }
  void* moved = allocate(bytes);
  if (moved)
  {
    std::memcpy(moved, old, std::min(had, bytes));
    deallocate(old);
  }
  return moved;
}

unsigned char TvariantArena::preAllocate(unsigned int bytes, unsigned int count)
{
  // The last block but one must leave enough to be cut off, else it takes the room of both.
  const TuInt64 payload = round8(bytes), slack = std::max<TuInt64>(payload + kHeader, kLeastRest) - payload - kHeader;
  const TuInt64 size = sizeof(Tpage) + (payload + kHeader) * count + slack;
  if (TpureArena::usePurify() || (fFreePages && fFreePages->fSize >= size))
    return 1;
  return size <= kMostPayload && keepNewPage(std::max(size, sizeof(Tpage) + TuInt64(fVariantPageSize))) ? 1 : 0;
}

// Returns the bytes freed. A block that is free already is left alone.
unsigned int TvariantArena::deallocateHeader(void* payload, Tpage* page) noexcept
{
  TvariantArena* arena = static_cast<TvariantArena*>(page->arena());
  Tvariant* block = static_cast<Tvariant*>(payload) - 1;
  const TuInt32 word = Tpoison::peek(block->fSize);
  if (word & 1)
    return 0;
  const unsigned freed = word >> 1;
  const bool joinsPrev = Tpoison::peek(block->fIsFree[kBefore]);
  const bool joinsNext = Tpoison::peek(block->fIsFree[kBehind]);
  Tvariant* prev = before(block);
  unsigned whole = freed;
  Tpoison::poison(payload, freed);
  if (joinsNext)
  {
    Tvariant* next = following(page, block);
    arena->unlink(next);
    whole += kHeader + (Tpoison::peek(next->fSize) >> 1);
    if (!following(page, next))
      page->fMark = TuInt32(reinterpret_cast<char*>(block) - page->at(0));
  }
  if (joinsPrev)
  {
    arena->unlink(prev);
    whole += kHeader + (Tpoison::peek(prev->fSize) >> 1);
    if (page->at(page->fMark) == reinterpret_cast<char*>(block))
      page->fMark = TuInt32(reinterpret_cast<char*>(prev) - page->at(0));
    block = prev;
  }
  else if (prev)
    Tpoison::poke(prev->fIsFree[kBehind], TuInt8(1));
  Tpoison::poke(block->fSize, TuInt32(whole << 1 | 1));
  tellFollowing(page, block);
  arena->fAllocatedMemory -= freed;
  if (--page->fCount == 0 && arena->fSavesEmptyPages)
  {
    arena->savePage(page);
    return freed;
  }
  arena->push(block);
  return freed;
}

// Keeps a page without a block in use, and in no list.
void TvariantArena::savePage(Tpage* page) noexcept
{
  if (fRover == page)
    fRover = nullptr;
  unlinkPage(page);
  page->setLinks(nullptr, fFreePages);
  fFreePages = page;
}

void TvariantArena::purgePage() noexcept
{
  for (Tpage *page = fFirstPage, *next = nullptr; page; page = next)
  {
    next = page->next();
    if (page->fCount == 0)
    {
      unlink(reinterpret_cast<Tvariant*>(page + 1));
      savePage(page);
    }
  }
}

void TvariantArena::deallocate(void* block, unsigned int& freed) noexcept
{
  freed = 0;
  Tpage* page = block ? getHeader(block) : nullptr;
  if (page)
    freed = deallocateHeader(block, page);
  else if (block)
  {
    freed = sizeOfBlock(block);
    deallocate(block);
  }
}

unsigned int TvariantArena::sizeOfBlock(const void* block) noexcept
{
  if (TpureArena::isPurified(block))
    return static_cast<const TpureArena::Tpurified*>(block)[-1].fSize;
  return Tpoison::peek(static_cast<const Tvariant*>(block)[-1].fSize) >> 1;
}

void TvariantArena::forgetPurified(void* block) noexcept
{
  fAllocatedMemory -= round8(sizeOfBlock(block));
}

void TvariantArena::reset() noexcept
{
  std::fill(std::begin(fHeads), std::end(fHeads), nullptr);
  std::fill(std::begin(fUsed), std::end(fUsed), 0);
  fAllocatedMemory = 0;
  fRover = nullptr;
  TbaseArena::reset();
}

// The faults of a page's blocks from its first to its last. Adds the bytes in use and the free blocks.
long TvariantArena::checkPage(Tpage* page, TuInt64& used, TuInt64& free) const
{
  long faults = 0;
  unsigned prev = 0, count = 0;
  bool prevFree = false, saidFree = false; // the block before, and what it said of this one
  for (std::size_t at = sizeof(Tpage), next = 0; at != page->fSize; at = next)
  {
    const Tfree* block = reinterpret_cast<Tfree*>(page->at(unsigned(at)));
    const std::size_t payload = block->payload();
    next = at + kHeader + payload;
    if (payload == 0 || payload % 8 || next > page->fSize || Tpoison::peek(block->fDistance) != at + kHeader)
      return faults + 1; // where the next block begins is unknown
    faults += Tpoison::peek(block->fPrevSize) != prev;
    faults += block->isFree() && prevFree; // not joined
    faults += at != sizeof(Tpage) && !prevFree && saidFree != block->isFree();
    faults += !block->isFree() && Tpoison::peek(block->fIsFree[kBefore]) != TuInt8(prevFree);
    faults += (next == page->fSize) != (at == page->fMark);
    prev = unsigned(payload);
    prevFree = block->isFree();
    saidFree = !prevFree && Tpoison::peek(block->fIsFree[kBehind]);
    count += !prevFree;
    used += prevFree ? 0 : payload;
    free += prevFree;
    if (page->fSize - next < kHeader + 8 && next != page->fSize)
      return faults + 1;
  }
  return faults + (count != page->fCount) + saidFree;
}

long TvariantArena::checkConsistency() const
{
  long faults = 0;
  TuInt64 used = 0, free = 0, listed = 0;
  std::vector<Tpage*> pages;
  const Tpage* before = nullptr;
  for (Tpage* page = fFirstPage; page; before = page, page = page->next())
  {
    if (!page->isSound(this, before))
      return faults + 1;
    faults += checkPage(page, used, free);
    pages.push_back(page);
  }
  if (!TpureArena::usePurify())
    faults += TuInt32(used) != fAllocatedMemory;
  std::sort(pages.begin(), pages.end());

  // A free block with a size that its page has room for; what it holds can be read.
  const auto isBlock = [&pages](const Tfree* block) {
    const auto after = std::upper_bound(
      pages.begin(), pages.end(), reinterpret_cast<std::uintptr_t>(block),
      [](std::uintptr_t address, const Tpage* page) { return address < reinterpret_cast<std::uintptr_t>(page); });
    if (after == pages.begin())
      return false;
    const Tpage* page = after[-1];
    const std::size_t at = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(page);
    return at % 8 == 0 && at >= sizeof(Tpage) && at + kHeader + 8 <= page->fSize && block->isFree() &&
           Tpoison::peek(block->fDistance) == at + kHeader && block->payload() <= page->fSize - at - kHeader;
  };
  for (unsigned index = 0; index < kClasses; ++index)
  {
    faults += (fUsed[index / 64] >> index % 64 & 1) != (fHeads[index] ? 1 : 0);
    const Tfree* prevChain = nullptr;
    TuInt64 latest = 0;
    for (const Tfree* chain = fHeads[index]; chain;)
    {
      const Tfree* prev = nullptr;
      for (const Tfree* block = chain; block; prev = block, block = block->next())
      {
        if (!isBlock(block) || classOf(block->payload()) != index || block->payload() != chain->payload() ||
            block->prev() != prev || ++listed > free)
          return faults + 1;
        faults += index >= kExactClasses && prev && prev->stamp() <= block->stamp();
      }
      latest = std::max(latest, chain->stamp());
      if (index < kSingleClasses)
        break;
      faults += Tpoison::peek(chain->fPrevChain) != prevChain;
      prevChain = chain;
      chain = chain->nextChain();
    }
    faults += index >= kExactClasses && fHeads[index] && latest != fLatest[index];
  }
  return faults + (listed != free);
}

void TvariantArena::debug(std::ostream& out) const
{
  out << allocatedMemory() << " bytes in use, pages of " << fVariantPageSize << "; ";
  TbaseArena::debug(out);
  std::size_t lengths[128] = {};
  for (unsigned index = 0; index < kClasses; ++index)
  {
    for (const Tfree* chain = fHeads[index]; chain; chain = index < kSingleClasses ? nullptr : chain->nextChain())
    {
      for (const Tfree* block = chain; block; block = block->next())
        ++lengths[freeListIndex(block->payload())];
    }
  }
  for (unsigned index = 0; index < 128; ++index)
  {
    if (lengths[index])
      out << "  free list " << index << ": " << lengths[index] << (lengths[index] == 1 ? " block\n" : " blocks\n");
  }
}
