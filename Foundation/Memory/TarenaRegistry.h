/// \file
/// TarenaRegistry: the variant and compact arenas of the process, for dumps and for what concerns all of them.
///
/// Arenas enter and leave it by themselves: a variant arena when it is constructed, a compact one with its first page.

#pragma once

#include "Foundation/Memory/TbaseArena.h"

/// A growing table of arenas, in no particular order. Static data, not locked.
class FOUNDATION_API TarenaRegistry
{
public:
  /// One arena and the tag that it is registered with: TbaseArena::kVariant or kCompact, whatever its page type says.
  struct Tentry
  {
    TbaseArena* fArena;
    TbaseArena::TpageType fTag;
  };

  static unsigned int count() noexcept;

  /// The entry \p index, from 0 and below count(). It moves when an arena enters or leaves.
  static const Tentry& entry(unsigned int index) noexcept;

  /// Registers \p arena; 0 when there is no memory for it, else 1.
  static unsigned char add(TbaseArena* arena, TbaseArena::TpageType tag) noexcept;

  /// Takes \p arena out if it is in. Linear.
  static void remove(const TbaseArena* arena) noexcept;

private:
  static Tentry* fEntries;
  static unsigned int fCount;
};
