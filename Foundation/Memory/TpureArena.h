/// \file
/// TpureArena: the mode in which arenas hand every single block over to malloc.
///
/// Set the environment variable PURIFY, to anything, when a memory checker is to see each block of an arena by itself:
/// its exact size, when it was taken and when it was released. Every arena of the process then works that way, slowly.
/// Arenas do it by themselves; nothing here needs to be called, except to ask for the mode.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstdint>

class TbaseArena;

/// Blocks that stand each for itself, in a list per arena, so that reset() and the destructor can release them.
class FOUNDATION_API TpureArena
{
public:
  /// What stands before such a block. The last word is where other blocks have the distance to their page: a multiple
  /// of 8, which the magic value is not.
  struct alignas(8) Tpurified
  {
    TbaseArena* fOwner;
    Tpurified* fNext;
    Tpurified** fLink; // the link that points here
#if UINTPTR_MAX == 0xFFFFFFFF
    TuInt32 fSpare;
#endif
    TuInt32 fSize; // as asked for
    TuInt32 fMagic;
  };
  static constexpr TuInt32 kMagic = 0x56D4D66D;

  /// 1 in purify mode, else 0. The environment is read on the first call.
  static unsigned char usePurify() noexcept;

  /// A block of \p size bytes, in the list of \p owner; null when memory ran out.
  static void* allocate(TbaseArena& owner, unsigned int size) noexcept;

  /// Whether \p block, of any arena but a compact one, was taken in purify mode.
  static bool isPurified(const void* block) noexcept;

  /// The record of a purified block.
  static Tpurified* getHeader(void* block) noexcept
  {
    return static_cast<Tpurified*>(block) - 1;
  }

  /// Takes a purified block out of its list and frees it.
  static void deallocate(void* block) noexcept;
};

static_assert(sizeof(TpureArena::Tpurified) == (sizeof(void*) == 8 ? 32 : 24), "blocks behind it are aligned to 8");
