/// \file
/// TresourceQuery: what the system says of its memory and of this process.
///
/// For reports and for decisions about large requests; TmallocAllocator decides by it. Each query asks the system,
/// which takes some microseconds. A figure that the system does not tell is 0.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

/// Figures of the moment. Sizes are in bytes.
///
/// \code
///   if (TresourceQuery::freeMemory() + TresourceQuery::freeSwap() < textureBytes)
///     useSmallerTextures();
/// \endcode
class FOUNDATION_API TresourceQuery
{
public:
  /// Physical memory that can be had without swapping, what the system would take back from its file cache included.
  static TuInt64 freeMemory() noexcept;

  /// Swap space not in use.
  static TuInt64 freeSwap() noexcept;

  /// Swap space in all.
  static TuInt64 maximumSwap() noexcept;

  /// What all processes together may commit, physical memory included.
  static TuInt64 logicalSwap() noexcept;

  /// The private, writable memory of this process: heaps, large blocks, stacks and static data.
  static TuInt64 heapSize() noexcept;

  /// The most physical memory that this process has had.
  static TuInt64 maxResidentSize() noexcept;

  /// How many page faults this process has had, those without a transfer included.
  static TuInt64 pageFaults() noexcept;

  /// Milliseconds since some moment before the process began; never goes back.
  static TuInt64 tickCount() noexcept;
};
