/// \file
/// Tstack: a stack of elements that are bytes. TtypedStack is its typed face.
///
/// Derive a stack of your own elements in one line:
///
/// \code
///   class TedgeStack : public TtypedStack<Tedge> {};
/// \endcode

#pragma once

#include "Foundation/Container/TtypedArray.h"

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

/// A stack of \p X, whose elements can be read and changed like those of an array, the oldest first.
template <class X>
class TtypedStack : public TarrayElements<X, Tstack>
{
  static_assert(std::is_trivially_copyable_v<X>, "elements of a stack are bytes");

public:
  TtypedStack()
    : TarrayElements<X, Tstack>(unsigned(sizeof(X)))
  {
  }

  /// Pushes a copy of \p value, which may lie in the stack; returns 0 or throws as arrays do.
  long push(const X& value) { return this->insertElement(&value, this->fLength, 1); }

  /// Moves the top to \p out, or returns false when there is none.
  bool pop(X& out) { return this->popElement(&out); }

  /// Copies the top to \p out, or returns false when there is none.
  bool getTop(X& out) const { return this->getTopElement(&out); }
};
