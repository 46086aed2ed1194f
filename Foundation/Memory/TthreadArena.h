/// \file
/// TthreadArena: one variant arena per thread, opened and closed by number.
///
/// Use it where worker threads allocate much: each works in an arena of its own, without a lock. A thread is whatever
/// the program numbers. The trap: open and close all arenas from one thread, say before the workers start and after
/// they have ended; only what lies between belongs to the worker.

#pragma once

#include "Foundation/Memory/TvariantArena.h"

/// The variant arena of a thread. Its pages come from malloc, which may be asked from many threads at once.
///
/// \snippet arena.cpp thread
class FOUNDATION_API TthreadArena : public TvariantArena
{
public:
  /// Threads have the numbers from 0 up to, but without, this.
  static constexpr long kMaxThreads = 64;

  /// The arena of \p thread, which is opened with the borrowed \p name unless it is open. It lives until it is closed.
  /// Null when the number is out of range or there is no memory.
  static TthreadArena* open(long thread, const char* name);

  /// Closes the arena of \p thread: its blocks and pages are gone. Returns 0 when it was not open, else 1.
  static unsigned char close(long thread);

  /// Closes this arena, which must not be used from then on.
  void close() { close(fThread); }

  /// The number that it was opened with.
  long thread() const noexcept { return fThread; }

private:
  TthreadArena(long thread, const char* name);
  ~TthreadArena() = default;

  long fThread;
};
