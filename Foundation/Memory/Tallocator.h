/// \file
/// Tallocator: where arenas and large buffers get their pages from.
///
/// Derive from it to feed arenas from memory of your own; the process-wide source is TmallocAllocator. One virtual call
/// per page, never one per block.

#pragma once

#include "Foundation/Platform/Export.h"

/// A source of pages.
class FOUNDATION_API Tallocator
{
public:
  virtual ~Tallocator();

  /// \p size bytes, aligned to 8 or better and not cleared, or null. \p tag names the use in statistics; it must
  /// outlive the page, and may be null. May throw TmemoryException instead of returning null.
  virtual void* allocate(unsigned int size, const char* tag) = 0;

  /// Takes back a \p block of \p size bytes that allocate() returned.
  virtual void free(void* block, unsigned int size) = 0;

protected:
  Tallocator() = default;
  Tallocator(const Tallocator&) = default;
  Tallocator& operator=(const Tallocator&) = default;
};
