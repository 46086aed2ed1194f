/// \file
/// T4dDblMatrixStack and T4dFltMatrixStack: matrices, the last in being the first out.

#pragma once

#include "Foundation/Container/Tstack.h"
#include "Foundation/Math/T4dDblMatrix.h"

/// Holds copies, and grows by 4 matrices at first.
///
/// \code
///   T4dDblMatrixStack stack;
///   stack.push(current);
///   current.premultBy(child);
///   ...
///   stack.pop(current);
/// \endcode
template <class Real>
class TmatrixStackOf : public Tstack
{
public:
  TmatrixStackOf()
    : Tstack(unsigned(sizeof(TmatrixOf<Real>)))
  {
  }

  /// Returns 0; without memory it throws TmemoryException and leaves the stack. \p m may be a matrix in the stack.
  long push(const TmatrixOf<Real>& m) { return insertElement(&m, fLength, 1); }

  /// Removes the top into \p out, or copies it there. False, and \p out unchanged, if the stack is empty.
  bool pop(TmatrixOf<Real>& out) { return popElement(&out); }
  bool getTop(TmatrixOf<Real>& out) const { return getTopElement(&out); }
};
