/// \file
/// TstackArena: blocks of any size, one behind the other, that are released all together.
///
/// Use it for what is built up and thrown away as a whole: a block has no header and costs an addition. The trap: a
/// single block cannot be released.

#pragma once

#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/TbaseArena.h"

/// An arena whose blocks stand in address order.
///
/// \snippet arena.cpp stack
///
/// A page is its header of 32 bytes and then the blocks, each a multiple of 8 long. What is left of a page when a block
/// does not fit stays unused until reset().
class FOUNDATION_API TstackArena : public TbaseArena
{
public:
  /// Pages with room for \p pageSize bytes of blocks, rounded up to a multiple of 8.
  explicit TstackArena(unsigned int pageSize, Tallocator& allocator = processAllocator()) noexcept
    : TbaseArena(kStack, allocator)
    , fPageSize(round8(pageSize))
  {
  }

  /// Pages with room for \p count blocks of \p blockSize bytes.
  TstackArena(unsigned int blockSize, unsigned int count, Tallocator& allocator = processAllocator()) noexcept;

  /// Bytes of blocks that a page to come has room for.
  unsigned int pageSize() const noexcept { return fPageSize; }
  void setPageSize(unsigned int bytes) noexcept { fPageSize = round8(bytes); }

  /// \p bytes, rounded up to a multiple of 8, aligned to 8 and not cleared, from the newest page or from a new one that
  /// is at least as large; null for 0 bytes, and when the allocator has no page.
  void* allocate(unsigned int bytes)
  {
    Tpage* page = fFirstPage;
    if (bytes - 1 < 0xFFFFFFF8U && page && round8(bytes) <= page->fSize - page->fMark)
    {
      char* block = page->at(page->fMark);
      page->fMark += round8(bytes);
      ++page->fCount;
      Tpoison::unpoison(block, round8(bytes));
      return block;
    }
    return allocateSlowly(bytes);
  }

  /// \p count blocks of \p bytes, each rounded up to a multiple of 8, in a row.
  void* allocate(unsigned int bytes, unsigned int count);

  /// Sees to it that blocks of \p bytes together can be taken before the allocator is asked for another page. Returns 0
  /// when the allocator refused, else 1. In purify mode it does nothing.
  unsigned char preAllocate(unsigned int bytes);

private:
  void* allocateSlowly(unsigned int bytes);

  unsigned int fPageSize;
};
