/// \file
/// TbaseArena: what all arenas have in common, and the pages that they cut their blocks from.
///
/// An arena takes large pages from a Tallocator and carves them into blocks: TfixedArena of one size, TvariantArena of
/// any, TstackArena of any that are released together, TcompactArena of one size without a byte of header. It keeps its
/// pages until it is destroyed; reset() releases all blocks at once. Allocating returns null when the allocator has no
/// page; arenas themselves never throw. The trap: nothing is locked, so each arena belongs to one thread at a time.

#pragma once

#include "Foundation/Memory/TpureArena.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>

class Tallocator;

/// The base of the arenas. It has no virtual functions: an arena is used and destroyed as what it is.
class FOUNDATION_API TbaseArena
{
public:
  enum TpageType : Tint8
  {
    kFixed = 0,
    kVariant = 1,
    kStack = 2,
    kCompact = 3
  };
  class Tpage;

  /// An arena without pages, which will come from \p allocator.
  TbaseArena(TpageType type, Tallocator& allocator) noexcept;

  /// Gives every page back to the allocator. All blocks are gone.
  ~TbaseArena();
  TbaseArena(const TbaseArena&) = delete;
  TbaseArena& operator=(const TbaseArena&) = delete;

  /// The allocator of the process, from which pages come where no other is given.
  static Tallocator& processAllocator();

  TpageType pageType() const noexcept { return fPageType; }

  /// Whether single blocks can be released: for fixed and variant arenas.
  bool canFreeMemory() const noexcept { return fPageType == kFixed || fPageType == kVariant; }

  /// Tags the arena's pages in the allocator's statistics. Borrowed: the text must outlive the arena. May be null.
  const char* name() const noexcept { return fName; }
  void setName(const char* name) noexcept { fName = name; }

  /// The page that was added last; its next() leads to the older ones. Null when no page is in use.
  Tpage* firstPage() const noexcept { return fFirstPage; }

  /// Bytes that the arena holds of its allocator: pages in use and kept, at most 0xFFFFFFFF.
  unsigned int footPrint() const noexcept;

  /// Releases all blocks at once. The pages are kept for reuse.
  void reset() noexcept;

  /// Bytes from the arena's allocator, tagged with \p tag or the arena's name; null when there are none. Adds to
  /// footPrint(). What the allocator throws goes through and leaves the arena as it was.
  void* allocatePage(unsigned int size, const char* tag);
  void* allocatePage(unsigned int size) { return allocatePage(size, fName); }

  /// Gives back \p size bytes at \p page.
  void freePage(void* page, unsigned int size);

  /// Writes the arena's name, its sizes, and a line per page.
  void debug(std::ostream& out) const;

protected:
  friend class TpureArena;

  /// A constant-initialised arena, good in any static initialiser, with the process allocator.
  constexpr TbaseArena(TpageType type, const char* name) noexcept
    : fPageType(type)
    , fName(name)
  {
  }

  /// Puts \p page at the head of the pages in use, and takes it out again.
  void addPage(Tpage* page) noexcept;
  void unlinkPage(Tpage* page) noexcept;

  /// Takes a kept page of at least \p size bytes, looking at a few; null when there is none.
  Tpage* takeFreePage(unsigned int size) noexcept;
  /// A new page of \p size bytes, kept for later; null as from the allocator, or when \p size is not below 2^32.
  Tpage* keepNewPage(TuInt64 size);
  void setFreePages(Tpage* pages) noexcept { fFreePages = pages; }

  /// Gives all pages back, each with \p extra bytes more than its size.
  void destroyPages(unsigned int extra) noexcept;

  /// \p bytes rounded up to a multiple of 8, saturating: every page for the largest result is refused.
  static constexpr unsigned int round8(unsigned int bytes) noexcept
  {
    return bytes > 0xFFFFFFF8U ? 0xFFFFFFF8U : (bytes + 7) & ~7U;
  }

  TpureArena::Tpurified* fPurified = nullptr; // the blocks of purify mode
  TpageType fPageType;
  Tallocator* fAllocator = nullptr; // null for that of the process
  Tpage* fFirstPage = nullptr;
  Tpage* fFreePages = nullptr; // linked by next
  std::size_t fPageBytes = 0;
  const char* fName = nullptr;
};

/// The header at the start of a page, as large in every build.
///
///     bytes   fixed, variant, stack, compact
///      0..17  addresses of the arena, of the previous and of the next page, 48 bits each
///     18..19  checksum over them and the size
///     20..23  bytes of the page, this header included
///     24..27  blocks in use
///     28..31  variant: where the last block begins; stack: where the next one will; compact: the next index to try
class TbaseArena::Tpage
{
public:
  /// Becomes the newest page in use of \p arena. \p size counts from this header on.
  Tpage(TbaseArena* arena, unsigned int size) noexcept
    : fSize(size)
  {
    fArena.set(arena);
    arena->addPage(this);
  }

  TbaseArena* arena() const noexcept { return fArena.get(); }
  Tpage* prev() const noexcept { return fPrev.get(); }
  Tpage* next() const noexcept { return fNext.get(); }
  unsigned int size() const noexcept { return fSize; }

  /// The page type of the arena.
  TpageType type() const noexcept { return arena()->pageType(); }
  bool isFixed() const noexcept { return type() == kFixed; }
  bool isVariant() const noexcept { return type() == kVariant; }
  bool isStack() const noexcept { return type() == kStack; }
  bool isCompact() const noexcept { return type() == kCompact; }

  /// Blocks in use.
  unsigned int allocationCount() const noexcept { return fCount; }
  void incrementAllocationCount() noexcept { ++fCount; }
  void decrementAllocationCount() noexcept { --fCount; }

  /// Whether this is a page of \p arena behind \p prev whose links can be followed.
  bool isSound(const TbaseArena* arena, const Tpage* prev) const noexcept;

private:
  friend class TbaseArena;
  friend class TfixedArena;
  friend class TvariantArena;
  friend class TstackArena;
  friend class TcompactArena;

  // An address in six bytes: those of user space have no more.
  template <class To>
  class Tlink
  {
  public:
    To* get() const noexcept
    {
      TuInt32 low;
      std::memcpy(&low, fLow, sizeof low);
      if constexpr (sizeof(void*) == 4)
        return reinterpret_cast<To*>(std::uintptr_t(low));
      else
        return reinterpret_cast<To*>(std::uintptr_t(TuInt64(fHigh) << 32 | low));
    }
    void set(const To* to) noexcept
    {
      const TuInt64 address = reinterpret_cast<std::uintptr_t>(to);
      const TuInt32 low = TuInt32(address);
      std::memcpy(fLow, &low, sizeof low);
      fHigh = TuInt16(address >> 32);
    }

  private:
    TuInt16 fLow[2] = {};
    TuInt16 fHigh = 0;
  };

  TuInt16 checksum() const noexcept;
  void setLinks(Tpage* prev, Tpage* next) noexcept;
  char* at(unsigned int offset) noexcept { return reinterpret_cast<char*>(this) + offset; }

  Tlink<TbaseArena> fArena;
  Tlink<Tpage> fPrev;
  Tlink<Tpage> fNext;
  TuInt16 fCheck = 0;
  TuInt32 fSize;
  TuInt32 fCount = 0;
  TuInt32 fMark = 0; // see above
};

static_assert(sizeof(TbaseArena::Tpage) == 32, "page headers are the same in every build");
