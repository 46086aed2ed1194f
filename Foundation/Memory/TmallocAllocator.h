/// \file
/// TmallocAllocator: the process-wide source of pages and large buffers.
///
/// Use it for buffers that may grow large (arrays do) and as the source of arenas. Blocks below 31,744 bytes come from
/// malloc; larger ones come whole from the system, filled with zeros, and go back whole, but for at most 16 MiB of
/// released pages that stay for the next large blocks until memory runs low. Each block is recorded with its size and a
/// tag, so that it can be told what memory is used for. Before the machine runs dry, a request is
/// answered with a report on standard error and a TmemoryException. Not for small objects: a block costs a record
/// besides.
///
/// Not locked: blocks are taken and released by one thread at a time.
///
/// Environment, set to anything:
///   VEXA_USE_MALLOC           all blocks come from malloc, nothing is recorded; read when the library is loaded
///   VEXA_NO_MEMORY_EXCEPTION  low memory is neither reported nor an exception: a large block that cannot be had is
///   null

#pragma once

#include "Foundation/Container/TptrHashTable.h"
#include "Foundation/Memory/Tallocator.h"

#include <iosfwd>

class Tmmap;
class TstringArray;

/// What is known of a block. Its address is fKey.
struct TmmapEntry : TptrHashTableEntry
{
  unsigned int fSize; // as asked for; of large blocks the size aligned by pageAlign()
  const char* fTag;   // not owned; never null
  Tmmap* fMap;        // where it came from; null for malloc
};

/// Memory from one source. The allocator's table of blocks is one: it holds the records of them all. Others stand for a
/// source only: TmallocAllocator::mapZeroedMemory() for the system, TmallocAllocator::mapDiskFile() for a file.
class FOUNDATION_API Tmmap : public TptrHashTable
{
public:
  /// The record of the block at \p address, null when there is none. It lives as long as the block.
  const TmmapEntry* find(const void* address) const noexcept
  {
    return static_cast<const TmmapEntry*>(TptrHashTable::find(address));
  }

  /// The file behind it, which stays this object's: -1 and null without one.
  int descriptor() const noexcept { return fDescriptor; }
  const char* fileName() const noexcept { return fFileName; }

  TentryIterator<const TmmapEntry> begin() const noexcept { return beginAs<const TmmapEntry>(); }
  TentryIterator<const TmmapEntry> end() const noexcept { return {}; }

private:
  friend class TmallocAllocator;

  bool openFile(const char* name) noexcept;
  void closeFile() noexcept;

  int fDescriptor = -1;
  char* fFileName = nullptr; // owned
};

/// The process allocator. Its state is the process's: all objects of this class are alike, and process() is at hand.
///
/// \code
///   float* heights = static_cast<float*>(mmapAlloc(count * sizeof(float), "Terrain"));
///   heights = static_cast<float*>(mmapRealloc(heights, 2 * count * sizeof(float), "Terrain"));
///   mmapFree(heights);
/// \endcode
///
/// Tags are kept by address until the block is released. A null tag is recorded as an empty one.
class FOUNDATION_API TmallocAllocator : public Tallocator
{
public:
  /// Costs nothing: there is no state but the process's.
  TmallocAllocator() = default;

  /// One that exists before any static initialiser that asks for it, and is never destroyed.
  static TmallocAllocator& process();

  /// alloc(), mmapFree() and mmapRealloc() for those who know a Tallocator. A null tag becomes "Render Arena" in
  /// allocate(). The size given to free() is not used.
  void* allocate(unsigned int size, const char* tag) override;
  void free(void* block, unsigned int size) override;
  void* realloc(void* block, unsigned int size, const char* tag);

  /// A block of \p size bytes, aligned to 8 or better; null for 0 (but what malloc gives with VEXA_USE_MALLOC). From
  /// 31,744 bytes the size is aligned by pageAlign(), and the block is filled with zeros.
  ///
  /// Throws TmemoryException when memory runs out, and for large blocks already when the free-memory estimate is not
  /// above \p size. A size whose alignment does not fit 32 bits is more than there is. When there is no memory for the
  /// record, the address is printed to standard error and the block is returned all the same, but never released.
  static void* alloc(unsigned int size, const char* tag);

  /// Begins the allocator's work: whoever needs it first does so, and loading the library does so at the latest. From
  /// then on, until the library is unloaded, operator new throws TmemoryException in the whole process, since
  /// std::set_new_handler is given such a handler. Returns the table of blocks, null when all come from malloc.
  ///
  /// With a \p diskFile that file is created, which must not exist, and stands behind mapDiskFile() until purge() or
  /// the end of the library.
  static Tmmap* open(const char* diskFile);

  /// Closes and deletes the file behind mapDiskFile(), if there is one.
  static void purge();

  /// 1 when all blocks come from malloc; then pageSize() and mask() are 0 and pageAlign() changes nothing.
  static unsigned char useMalloc();

  /// The alignment of large sizes, 16, and that less one.
  static unsigned int pageSize();
  static unsigned int mask();

  /// \p size rounded up to a multiple of pageSize(); 0 when that does not fit.
  static unsigned int pageAlign(unsigned int size);

  /// The free-memory estimate, in bytes: what was free (physical memory and swap) when it was last measured, less 10
  /// MiB that are never given away, less what large blocks took since. It stays within 32 bits with a sign; at 2^31 - 1
  /// it means that or more.
  static Tint32 freeMemory();

  /// Measures the estimate anew when it is 5 seconds old, or at once with \p force, and returns it.
  static Tint32 setFreeMemory(unsigned char force);

  /// 1 when \p bytes are below the estimate, which is first measured anew when it is 5 seconds old.
  static unsigned char checkFreeMemory(Tint32 bytes);

  /// Adds \p delta to the estimate, until it is measured again, and returns it.
  static Tint32 adjustFreeMemory(Tint32 delta);

  /// Appends a line "%8.3f Mb\tCurrent\n" with the heap size (see TresourceQuery), then a line "%8.3f Mb\t%s\n" for
  /// each tag with the bytes held under it, in the order of their texts. Mb are 1,000,000 bytes. The time grows with
  /// the number of blocks times that of tags.
  static void getStatistics(TstringArray& lines);

  /// Prints, between rules: page faults since the last report, the maximum resident size if it is another than then,
  /// the heap size when large blocks were at their peak, that peak (which begins anew), and the lines of
  /// getStatistics(). Then returns what the heaps can spare to the system.
  static void printStatistics(std::ostream& out);

  /// Prints what the process occupies, a line each: \p title (left out when null), then as "%8.3f Mb\t%s\n" the heap
  /// size, the large blocks, the maximum resident size, and the maximum and logical swap that there were when the
  /// allocator was opened.
  static void printFootPrint(std::ostream& out, const char* title);

  /// The sources that records name: mapZeroedMemory() for all large blocks. Null when all blocks come from malloc.
  static Tmmap* mapZeroedMemory();
  static Tmmap* mapDiskFile();
};

/// TmallocAllocator::alloc().
FOUNDATION_API void* mmapAlloc(unsigned int size, const char* tag);

/// Changes a block's size and tag; it may move. Null allocates one, a size of 0 releases it and returns null, a block
/// that is not known gives null. New bytes are not cleared. On exhaustion throws as TmallocAllocator::alloc() does, or
/// returns null with VEXA_NO_MEMORY_EXCEPTION: \p block then stays as it was.
FOUNDATION_API void* mmapRealloc(void* block, unsigned int size, const char* tag);

/// Releases a block and returns its recorded size; 0 for null, for one that is not known, and when all come from
/// malloc.
FOUNDATION_API unsigned int mmapFree(void* block);
