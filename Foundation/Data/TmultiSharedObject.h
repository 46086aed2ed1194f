/// \file
/// TsharedObject and TmultiSharedObject: objects that live as long as somebody refers to them.
///
/// Derive from TsharedObject where references are all alike, from TmultiSharedObject where two kinds of them must be
/// told apart. A reference costs an increment. The traps: an object begins without references and is nobody's then, so
/// take one at once or delete it; and cycles of references are never freed.

#pragma once

#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <new>

/// An object with a count for each of \p kKinds kinds of references, numbered from 0. It deletes itself when the last
/// reference of all kinds goes. Counts belong to the object, and are not copied. Nothing is locked.
template <unsigned int kKinds>
class TsharedObjectOf
{
public:
  /// Takes a reference.
  void reference(unsigned int kind = 0) noexcept { ++fCounts[kind]; }

  /// Gives one back, which must have been taken; the object may be gone then.
  void unreference(unsigned int kind = 0)
  {
    unreferenceNoDelete(kind);
    if (referenceCount() == 0)
      delete this;
  }

  /// Gives one back and leaves the object to the caller.
  void unreferenceNoDelete(unsigned int kind = 0) noexcept { --fCounts[kind]; }

  /// References of all kinds, or of one.
  Tint32 referenceCount() const noexcept
  {
    Tint32 sum = 0;
    for (const Tint32 count : fCounts)
      sum += count;
    return sum;
  }
  Tint32 referenceCount(unsigned int kind) const noexcept { return fCounts[kind]; }

  /// Shared objects come from the heap, wherever their class is from.
  static void* operator new(std::size_t size) { return ::operator new(size); }
  static void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept
  {
    return ::operator new(size, nothrow);
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* object) noexcept { ::operator delete(object); }
  static void operator delete(void* object, const std::nothrow_t&) noexcept { ::operator delete(object); }
  static void operator delete(void*, void*) noexcept {}

  virtual ~TsharedObjectOf() = default;

protected:
  TsharedObjectOf() noexcept = default;
  TsharedObjectOf(const TsharedObjectOf&) noexcept {}
  TsharedObjectOf&
  operator=(const TsharedObjectOf&) noexcept // NOLINT(bugprone-unhandled-self-assignment): copies nothing
  {
    return *this;
  }

private:
  Tint32 fCounts[kKinds] = {};
};

/// References of one kind.
class TsharedObject : public TsharedObjectOf<1>
{};

/// References of two kinds.
class TmultiSharedObject : public TsharedObjectOf<2>
{};
