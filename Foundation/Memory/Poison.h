/// \file
/// Tpoison: lets AddressSanitizer see the bytes that no caller of an arena may touch.
///
/// The arenas poison what is not inside a live block: unused and released blocks, and their own headers between
/// blocks, which so catch what runs past a block's end. Without AddressSanitizer every function here does nothing, or
/// is the plain load or store.

#pragma once

#include "Foundation/Platform/Sanitizer.h"

#include <cstddef>

#ifdef FOUNDATION_ASAN
#  include <sanitizer/asan_interface.h>
#  define FOUNDATION_UNCHECKED [[gnu::no_sanitize_address]]
#else
#  define FOUNDATION_UNCHECKED
#endif

/// The arenas' dealings with AddressSanitizer. Addresses and sizes are multiples of 8.
class Tpoison
{
public:
  /// From now on a caller's access to these bytes is reported.
  static void poison([[maybe_unused]] const void* start, [[maybe_unused]] std::size_t bytes) noexcept
  {
#ifdef FOUNDATION_ASAN
    __asan_poison_memory_region(start, bytes);
#endif
  }

  /// These bytes may be used.
  static void unpoison([[maybe_unused]] const void* start, [[maybe_unused]] std::size_t bytes) noexcept
  {
#ifdef FOUNDATION_ASAN
    __asan_unpoison_memory_region(start, bytes);
#endif
  }

  /// Reads and writes an arena's own word, poisoned or not.
  template <class Word>
  FOUNDATION_UNCHECKED static Word peek(const Word& word) noexcept
  {
    return word;
  }
  template <class Word>
  FOUNDATION_UNCHECKED static void poke(Word& word, Word value) noexcept
  {
    word = value;
  }
};
