/// \file
/// TheapArena: the arenas whose blocks can be released one by one without knowing which arena they are of.
///
/// The four bytes before a block say how far behind its page it stands, and the page knows its arena.

#pragma once

#include "Foundation/Memory/TbaseArena.h"

/// The base of TfixedArena and TvariantArena.
class FOUNDATION_API TheapArena : public TbaseArena
{
public:
  using TbaseArena::TbaseArena;

  /// Releases \p block of whatever fixed or variant arena it is; null is ignored. Its page stays in the arena.
  static void deallocate(void* block) noexcept;
  void free(void* block) noexcept { deallocate(block); }

  /// The page that holds \p block, a block of a fixed or variant arena; null in purify mode.
  static Tpage* getHeader(void* block) noexcept;
};
