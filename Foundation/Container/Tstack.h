/// \file
/// Tstack: a stack of elements that are bytes.
///
/// Derive from it and wrap the protected operations as push(), pop() and getTop() of the element's type.

#pragma once

#include "Foundation/Container/Tarray.h"

/// A Tarray that grows and shrinks at its end, by steps of 4 at first.
class FOUNDATION_API Tstack : public Tarray
{
public:
  explicit Tstack(unsigned int elementSize);

  /// Removes all elements and keeps the buffer.
  void clear();

protected:
  /// Pushes a copy of the element at \p element; returns 0 or throws as arrays do.
  long pushElement(void* element);

  /// Moves the top to \p out, or returns false when there is none.
  bool popElement(void* out);

  /// Copies the top to \p out, or returns false when there is none.
  bool getTopElement(void* out) const;
};
