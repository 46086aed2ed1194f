/// \file
/// TvariantArena: blocks of any size that can be released and resized one by one.
///
/// Use it for a group of objects of many sizes that lives in one place and may be dropped as a whole. A block costs 16
/// bytes beside its own. Released neighbours are joined at once. No operation slows down with the number of blocks,
/// used or free; only a fit search limit makes a search look at block after block. An arena object itself takes 13
/// KB. The trap: writing past a block's end destroys the header of the next; checkConsistency() tells.

#pragma once

#include "Foundation/Memory/TheapArena.h"

/// An arena of blocks of any size.
///
/// \snippet arena.cpp variant
///
/// A page is its header of 32 bytes and then blocks without gaps, each a header of 16 bytes and a payload that is a
/// multiple of 8. Free blocks are in 128 lists by payload:
///
///     payload   8  16 ..  136 | 144  192 | 256  384 | 512  768 | ...
///     list      1   2 ..   17 |  22   23 |  26   27 |  30   31 | ...    (from this payload on)
///
/// A request looks into the list of its size and then into the larger ones, and takes the first block that is large
/// enough; each list begins with what was added last.
class FOUNDATION_API TvariantArena : public TheapArena
{
public:
  static constexpr unsigned int kNoLimit = 0xFFFFFFFF;

  /// Pages of \p pageSize bytes of payload and room for one header per 24 of them. \p fitSearchLimit: see there. The
  /// \p name is borrowed. With \p savesEmptyPages, a page that loses its last block leaves the lists and is kept whole
  /// for reuse. With \p triesTailFirst, the end of the page that was allocated from last is preferred to every list.
  explicit TvariantArena(unsigned int pageSize = 4096, unsigned int fitSearchLimit = kNoLimit,
                         Tallocator& allocator = processAllocator(), const char* name = nullptr,
                         unsigned char savesEmptyPages = 0, unsigned char triesTailFirst = 1) noexcept;
  ~TvariantArena();

  /// At least \p bytes, at least 8, aligned to 8, not cleared; null for 0 bytes, when the allocator has no page, and
  /// from 2 GB on.
  void* allocate(unsigned int bytes) { return allocateWithin(bytes, fFitSearchLimit); }

  /// One block for \p count objects of \p bytes each, found within \p fitSearchLimit.
  void* allocate(unsigned int bytes, unsigned int count, unsigned int fitSearchLimit);

  /// Makes \p block \p bytes large, where it stands if the space behind it allows, and returns where it is now. The
  /// contents are kept up to the smaller size. Null, with the old block as it was, when there is no memory. A null
  /// block is allocated; 0 bytes release and give null.
  void* reallocate(void* block, unsigned int bytes);

  /// Sees to it that \p count blocks of \p bytes can be taken before the allocator is asked for another page. Returns 0
  /// when the allocator refused, else 1. In purify mode it does nothing.
  unsigned char preAllocate(unsigned int bytes, unsigned int count);

  /// Releases \p block, of whatever fixed or variant arena it is; null is ignored.
  static void deallocate(void* block) noexcept { TheapArena::deallocate(block); }
  /// The same for a block of a variant arena; \p freed becomes its size.
  static void deallocate(void* block, unsigned int& freed) noexcept;

  /// The usable bytes of \p block, a block of a variant arena; in purify mode what was asked for.
  static unsigned int sizeOfBlock(const void* block) noexcept;

  /// All sizes are multiples of this.
  static constexpr unsigned int granularity() noexcept { return 8; }

  /// The list, 0 to 127, of free blocks of \p payload bytes, a multiple of 8.
  static unsigned int freeListIndex(unsigned int payload) noexcept;

  /// The sum of the sizes of all blocks in use; in purify mode with each rounded up to 8.
  Tint32 allocatedMemory() const noexcept { return Tint32(fAllocatedMemory); }

  /// How many blocks of one list a search looks at, where those of a list may differ in size: from list 18 on. With 0
  /// it does without these lists.
  unsigned int fitSearchLimit() const noexcept { return fFitSearchLimit; }
  void setFitSearchLimit(unsigned int limit) noexcept { fFitSearchLimit = limit; }

  /// Bytes of blocks and their headers that a page to come has room for.
  unsigned int variantPageSize() const noexcept { return fVariantPageSize; }

  /// \p bytes of payload and room for one header per 24, or per \p blockSize, of them.
  void setVariantPageSize(unsigned int bytes) noexcept { setVariantPageSize(bytes, 24); }
  void setVariantPageSize(unsigned int bytes, unsigned int blockSize) noexcept;

  /// Takes the pages without a block in use out of the lists and keeps them whole for reuse. Linear in the pages.
  void purgePage() noexcept;

  /// Releases all blocks at once. The pages are kept for reuse.
  void reset() noexcept;

  /// 0 when the arena is sound, otherwise the number of faults found: boundary tags, sizes, neighbours that should be
  /// joined, links, counts, blocks in a wrong list. It follows no link that leads out of a page, and goes no further
  /// in a page or list behind a fault that hides the way. Linear; throws std::bad_alloc when the machine has no memory
  /// for it.
  long checkConsistency() const;

  /// Writes sizes and the lengths of the free lists, then as TbaseArena::debug.
  void debug(std::ostream& out) const;

private:
  friend class TheapArena;

  // Bytes 4 to 7 and the first 8 of the payload hold a free block's links, 48 bits each: to the next block, and to the
  // one before, which is null for the first of a chain.
  struct [[gnu::may_alias]] Tvariant
  {
    TuInt32 fPrevSize; // payload of the block before; 0 for the first of a page
    union
    {
      TuInt32 fNextLow;  // of a free block
      TuInt8 fIsFree[2]; // of one in use: whether the block before and the one behind are free
    };
    TuInt32 fSize;     // of the payload << 1, and 1 when free
    TuInt32 fDistance; // from the page to the payload
  };
  struct Tfree;

  // Lists from 22 on are split in 16 classes each, by size. Within a class there is a chain of blocks per size, latest
  // first; from 512 bytes on that can be several, whose first blocks are linked. Stamps tell which block of a list is
  // the latest. Blocks of that size have the room. So the first fit in a list is found without a look at those that do
  // not fit, and, since the arena keeps the latest stamp of each class, mostly without a look at any other block.
  static constexpr unsigned int kExactClasses = 18;
  static constexpr unsigned int kClassesPerList = 16;
  static constexpr unsigned int kSingleClasses = kExactClasses + 4 * kClassesPerList; // below: of one size
  static constexpr unsigned int kBands = 24; // of two lists each, from 144 and 192 bytes to 1.5 GB
  static constexpr unsigned int kClasses = kExactClasses + kBands * 2 * kClassesPerList;

  static unsigned int classOf(unsigned int payload) noexcept;
  unsigned int nextUsedClass(unsigned int from) const noexcept;
  void push(Tvariant* block) noexcept;
  void unlink(Tvariant* block) noexcept;
  Tfree* find(unsigned int payload, unsigned int limit) const noexcept;
  bool isWithin(Tfree* const* heads, TuInt64 stamp, unsigned int limit) const noexcept;
  void linkChain(unsigned int index, Tfree* prev, Tfree* block, Tfree* next) noexcept;

  void* allocateWithin(unsigned int bytes, unsigned int limit);
  Tvariant* allocateVariantPage(unsigned int payload);
  Tvariant* allocateVariantPageForBlock(unsigned int payload);
  Tvariant* openPage(TuInt64 size, unsigned int payload);
  void use(Tpage* page, Tvariant* block, unsigned int payload) noexcept;
  static Tvariant* before(Tvariant* block) noexcept;
  static Tvariant* following(Tpage* page, Tvariant* block) noexcept;
  static void tellFollowing(Tpage* page, Tvariant* block) noexcept;
  static unsigned int deallocateHeader(void* block, Tpage* page) noexcept;
  void forgetPurified(void* block) noexcept;
  void savePage(Tpage* page) noexcept;
  long checkPage(Tpage* page, TuInt64& used, TuInt64& free) const;

  unsigned int fFitSearchLimit;
  unsigned int fVariantPageSize;
  TuInt32 fAllocatedMemory = 0;
  bool fSavesEmptyPages;
  bool fTriesTailFirst;
  Tpage* fRover = nullptr; // the page that was allocated from last
  TuInt64 fStamp = 0;      // of the block that was released last
  TuInt64 fUsed[(kClasses + 63) / 64] = {};
  Tfree* fHeads[kClasses] = {};
  TuInt64 fLatest[kClasses] = {}; // stamp of a class that is used, from kExactClasses on
};
