/// \file
/// Whole blocks of memory from the system, and what the system says of memory and time. Internal to the library.

#pragma once

#include "Foundation/Platform/Types.h"

#include <cstddef>

namespace Platform {

/// A block that goes back to the system whole, aligned to 8 or better, of zeros if \p clear. Null with errno.
void* takeBlock(std::size_t size, bool clear);

/// Changes the size of a block, which may move; what it gains is zero if \p clear. Null with errno, and the block stays
/// as it was.
void* resizeBlock(void* block, std::size_t oldSize, std::size_t newSize, bool clear);

/// Some MiB of released blocks may stay with the process, for the blocks to come.
void releaseBlock(void* block, std::size_t size);

/// Gives those back to the system; false when there are none. Any thread may ask.
bool giveBackKept();

/// How many bytes a block from malloc() has, at least those asked for.
std::size_t usableSize(void* block);

/// Returns what the process's heaps can spare to the system, kept blocks too. Linear in the heaps' free memory.
void compactHeaps();

/// In bytes.
struct SystemMemory
{
  TuInt64 freePhysical; // without swapping
  TuInt64 freeSwap;
  TuInt64 maximumSwap; // the swap space there is
  TuInt64 logicalSwap; // what all processes together may commit
};
SystemMemory systemMemory();

struct ProcessMemory
{
  TuInt64 heapSize;    // bytes of private, writable memory
  TuInt64 maxResident; // bytes of physical memory, at the most so far
  TuInt64 pageFaults;  // so far, with and without a transfer
};
ProcessMemory processMemory();

/// Milliseconds since some moment before the process began; never goes back.
TuInt64 tickCount();

/// Seconds since the beginning of 1970, UTC, by the system's clock.
TuInt64 systemTime();

} // namespace Platform
