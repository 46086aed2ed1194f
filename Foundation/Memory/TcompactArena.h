/// \file
/// TcompactArena: blocks of one size without a header, a bit each.
///
/// Use it for very many tiny records: a block of 8 bytes costs 8.13. Allocation is a few instructions while the newest
/// page fills up. Releasing finds the page by address: at once when it is the page used last, otherwise by a binary
/// search. The trap: TheapArena::deallocate cannot be used; a block is released by an arena of its family.

#pragma once

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TbaseArena.h"

/// An arena of blocks of one size, a multiple of 8, whose pages say by a bitmap which are in use.
///
///     a page:  header, 48 bytes | blocks | bitmap, a bit per block
///
/// The bitmap is asked for beyond the page bytes. A page that loses its last block is saved for reuse; purge() gives
/// saved pages back.
///
/// \snippet arena.cpp compact
///
/// Arenas with the same name pointer are a family: one releases what another allocated. For pageType() a compact arena
/// is a fixed one; TarenaRegistry knows it as compact.
class FOUNDATION_API TcompactArena : public TbaseArena
{
public:
  class TcompactPage;

  /// Blocks of \p blockSize bytes, rounded up to a multiple of 8 and at least 8, in pages of \p pageBytes with their
  /// header but without their bitmap. The \p name is borrowed.
  TcompactArena(unsigned int blockSize, unsigned int pageBytes, Tallocator& allocator = processAllocator(),
                const char* name = nullptr) noexcept;

  /// The same with the process allocator, constant-initialised: good in any static initialiser.
  constexpr TcompactArena(unsigned int blockSize, unsigned int pageBytes, const char* name) noexcept
    : TbaseArena(kFixed, name)
    , fBlockSize(round8(blockSize ? blockSize : 1))
    , fCapacity(pageBytes > kPageHeader ? (pageBytes - kPageHeader) / fBlockSize : 0)
    , fPageSize(pageBytes)
    , fShift(shiftOf(fBlockSize))
  {
  }
  ~TcompactArena();

  unsigned int blockSize() const noexcept { return fBlockSize; }
  unsigned int numBlocksPerPage() const noexcept { return fCapacity; }

  /// A block, aligned to 8, not cleared; null when the allocator has no page.
  void* allocate() { return allocateFast(fBlockSize); }
  /// The same: \p bytes, which only purify mode looks at, must be no more than blockSize().
  void* allocate(unsigned int bytes) { return allocateFast(bytes); }
  /// A block if \p count objects of \p bytes each fit into one, else null.
  void* allocate(unsigned int bytes, unsigned int count)
  {
    return TuInt64(bytes) * count <= fBlockSize ? allocateFast(bytes * count) : nullptr;
  }
  inline void* allocateFast(unsigned int bytes);

  /// Releases \p block of this arena or another one of its family. Returns 1, or 0 when none of them has such a block
  /// in use. In purify mode every block is taken for one of the arena.
  inline unsigned char deallocate(void* block);

  /// Sees to it that \p blocks more can be taken before the allocator is asked for another page. Returns 0 when the
  /// allocator refused, else 1. In purify mode it does nothing.
  unsigned char preAllocate(unsigned int blocks);

  /// Releases all blocks at once; those of purify mode, of which nothing is known, are left. The pages are saved for
  /// reuse.
  void reset() noexcept;

  /// Gives the saved pages of every compact arena back to its allocator.
  static void purge();

  /// 0 when the arena is sound, otherwise the number of faults found: links, counts, bits.
  long checkConsistency() const;

  /// Writes a line for every compact arena that has pages, then as TbaseArena::debug.
  static void debug(std::ostream& out);

protected:
  /// A saved page, or a new one, as the newest in use; null when there is none.
  TcompactPage* reusePage();
  /// Saves \p page, in use but without a block.
  void savePage(TcompactPage* page) noexcept;
  /// Gives the saved \p page, unlinked already, back to the allocator.
  void deletePage(TcompactPage* page);
  /// Takes \p page out of the pages in use, and from being the current one.
  void unlinkPage(TcompactPage* page) noexcept;
  /// Gives the saved pages of this arena back.
  void purgePage();

private:
  static constexpr unsigned int kPageHeader = 48;

  static constexpr TuInt8 shiftOf(unsigned int size) noexcept
  {
    TuInt8 shift = 0;
    while (size >> shift > 1)
      ++shift;
    return size >> shift << shift == size ? shift : TuInt8(0);
  }

  void* allocateSlowly(unsigned int bytes);
  void* take(TcompactPage* page);
  unsigned char deallocateSlowly(void* block);
  inline bool release(TcompactPage* page, void* block);
  TcompactPage* makePage();
  TcompactPage* pageOf(const void* block) const noexcept;
  unsigned int bitmapBytes() const noexcept { return unsigned((TuInt64(fCapacity) + 31) / 32 * 4); }

  unsigned int fBlockSize;
  unsigned int fCapacity; // blocks per page
  unsigned int fPageSize;
  TuInt8 fShift;                       // log2 of a block size that is a power of two, else 0
  TcompactPage* fCurrent = nullptr;    // allocated from or freed into last
  unsigned int fRoomy = 0;             // pages in use that are not full
  unsigned int fPageCount = 0;         // in use and saved
  TcompactPage** fByAddress = nullptr; // all of them, in order; with room up to the next power of two
  bool fRegistered = false;
};

/// The header at the start of a compact page.
class TcompactArena::TcompactPage : public TbaseArena::Tpage
{
public:
  TcompactPage(TcompactArena* arena, unsigned int size) noexcept
    : Tpage(arena, size)
    , fCapacity(arena->fCapacity)
    , fBlockBytes(arena->fCapacity * arena->fBlockSize)
  {
  }

  unsigned int capacity() const noexcept { return fCapacity; }
  /// Where the next allocation looks first.
  unsigned int nextIndex() const noexcept { return fMark; }
  /// The first block.
  char* base() noexcept { return at(kPageHeader); }
  TuInt32* bitmap() noexcept { return reinterpret_cast<TuInt32*>(at(kPageHeader + fBlockBytes)); }

  /// Marks a free block as used and returns it, and its index in \p index; null when the page is full. Looks for it
  /// behind the cursor, then around the block that was released last, then from the beginning.
  void* allocateSearch(long* index) noexcept;

private:
  friend class TcompactArena;

  void clearBitmap() noexcept;

  TuInt32 fCapacity;
  TuInt32 fBlockBytes;   // of all blocks together
  TuInt32 fReleased = 0; // where in them the block stood that was released last
  TuInt32 fSpare = 0;
};

inline void* TcompactArena::allocateFast(unsigned int bytes)
{
  TcompactPage* page = fCurrent;
  if (page)
  {
    const unsigned index = page->fMark;
    if (index < page->fCapacity)
    {
      TuInt32& word = page->bitmap()[index / 32];
      const TuInt32 bit = TuInt32(1) << index % 32;
      if (!(word & bit))
      {
        word |= bit;
        page->fMark = index + 1;
        if (++page->fCount == page->fCapacity)
          --fRoomy;
        char* block = page->base() + std::size_t(index) * fBlockSize;
        Tpoison::unpoison(block, fBlockSize);
        return block;
      }
    }
  }
  return allocateSlowly(bytes);
}

inline unsigned char TcompactArena::deallocate(void* block)
{
  return fCurrent && release(fCurrent, block) ? 1 : deallocateSlowly(block);
}

// Whether the page holds the block and it was in use.
inline bool TcompactArena::release(TcompactPage* page, void* block)
{
  const std::uintptr_t offset =
    reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(page->base());
  if (offset >= page->fBlockBytes)
    return false;
  const TuInt32 index = fShift ? TuInt32(offset) >> fShift : TuInt32(offset) / fBlockSize;
  TuInt32& word = page->bitmap()[index / 32];
  const TuInt32 bit = TuInt32(1) << index % 32;
  if (index * fBlockSize != offset || !(word & bit))
    return false;
  word &= ~bit;
  Tpoison::poison(block, fBlockSize);
  page->fReleased = TuInt32(offset);
  fCurrent = page;
  if (page->fCount-- == page->fCapacity)
    ++fRoomy;
  if (page->fCount == 0)
    savePage(page);
  return true;
}
