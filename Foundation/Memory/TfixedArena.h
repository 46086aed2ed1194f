/// \file
/// TfixedArena: blocks of one size, each taken and released in a few instructions.
///
/// Use it for many small objects of a class. A block costs 8 bytes beside its own; TcompactArena saves them where
/// blocks are only released through their arena. The trap: allocate(n) takes n for granted and never looks at it.

#pragma once

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TheapArena.h"

/// An arena of blocks of one size, a multiple of 8.
///
/// \snippet arena.cpp fixed
///
/// A page is its header of 32 bytes and then slots, each a header of 8 bytes and a block. A page's slots are taken in
/// address order; released blocks are used, last released first, when the newest page has no slot left.
class FOUNDATION_API TfixedArena : public TheapArena
{
public:
  /// Blocks of \p blockSize bytes, rounded up to a multiple of 8 and at least 8, in pages of \p numBlocksPerPage. The
  /// \p name is borrowed.
  TfixedArena(unsigned int blockSize, unsigned int numBlocksPerPage, Tallocator& allocator = processAllocator(),
              const char* name = nullptr) noexcept
    : TheapArena(kFixed, allocator)
    , fBlocksPerPage(numBlocksPerPage)
    , fBlockSize(round8(blockSize ? blockSize : 1))
  {
    fName = name;
  }

  unsigned int blockSize() const noexcept { return fBlockSize; }

  /// Of the pages to come; 0 counts as 1.
  unsigned int numBlocksPerPage() const noexcept { return fBlocksPerPage; }
  void setNumBlocksPerPage(unsigned int blocks) noexcept { fBlocksPerPage = blocks; }

  /// A block, aligned to 8, not cleared; null when the allocator has no page.
  void* allocate() { return allocate(fBlockSize); }

  /// The same: \p bytes, which only purify mode looks at, must be no more than blockSize().
  void* allocate(unsigned int bytes)
  {
    if (fNext != fEnd) // null both without a page
    {
      char* block = fNext;
      fNext += kSlotHeader + fBlockSize;
      Tpoison::poke(reinterpret_cast<TuInt32*>(block)[-1], TuInt32(block - reinterpret_cast<char*>(fFirstPage)));
      ++fFirstPage->fCount;
      Tpoison::unpoison(block, fBlockSize);
      return block;
    }
    if (fReleased)
    {
      Treleased* block = fReleased;
      Tpoison::unpoison(block, fBlockSize);
      fReleased = block->fNext;
      ++getPage(block)->fCount;
      return block;
    }
    return allocateSlowly(bytes);
  }

  /// A block if \p count objects of \p bytes each fit into one, else null.
  void* allocate(unsigned int bytes, unsigned int count)
  {
    return TuInt64(bytes) * count <= fBlockSize ? allocate(bytes * count) : nullptr;
  }

  /// Releases \p block, fastest when it is one of this arena.
  void free(void* block) noexcept
  {
    if (block && Tpoison::peek(static_cast<const TuInt32*>(block)[-1]) != TpureArena::kMagic)
    {
      Tpage* page = getPage(block);
      if (page->arena() == this)
        return release(block, page);
    }
    deallocate(block);
  }

  /// Sees to it that \p blocks more can be taken before the allocator is asked for another page. Returns 0 when the
  /// allocator refused, else 1. In purify mode it does nothing.
  unsigned char preAllocate(unsigned int blocks);

  /// Releases all blocks at once. The pages are kept for reuse.
  void reset() noexcept;

  /// 0 when the arena is sound, otherwise the number of faults found: links, counts, distances. It follows no link that
  /// leads out of a page. Throws std::bad_alloc when the machine has no memory for it.
  long checkConsistency() const;

  /// Writes the block size, then as TbaseArena::debug.
  void debug(std::ostream& out) const;

private:
  friend class TheapArena;
  static constexpr unsigned int kSlotHeader = 8; // a spare word, and the distance from the page to the block

  struct [[gnu::may_alias]] Treleased
  {
    Treleased* fNext;
  };

  static Tpage* getPage(void* block) noexcept
  {
    return reinterpret_cast<Tpage*>(static_cast<char*>(block) - Tpoison::peek(static_cast<const TuInt32*>(block)[-1]));
  }

  void release(void* block, Tpage* page) noexcept
  {
    Treleased* released = static_cast<Treleased*>(block);
    released->fNext = fReleased;
    fReleased = released;
    --page->fCount;
    Tpoison::poison(block, fBlockSize);
  }

  void* allocateSlowly(unsigned int bytes);
  Tpage* allocateFixedPage(unsigned int bytes, unsigned int count);
  unsigned int slotsOf(const Tpage& page) const noexcept
  {
    return unsigned((page.fSize - sizeof(Tpage)) / (kSlotHeader + fBlockSize));
  }

  unsigned int fBlocksPerPage;
  unsigned int fBlockSize;
  Treleased* fReleased = nullptr; // last released first
  char* fNext = nullptr;          // the newest page's first untouched block
  char* fEnd = nullptr;           // fNext when none is left
};
