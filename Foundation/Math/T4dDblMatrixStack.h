/// \file
/// T4dDblMatrixStack and T4dFltMatrixStack: matrices, the last in being the first out.

#pragma once

#include "Foundation/Container/Tstack.h"
#include "Foundation/Math/T4dDblMatrix.h"

/// Holds copies, and grows by 4 matrices at first. Its members are those of TtypedStack.
///
/// \code
///   T4dDblMatrixStack stack;
///   stack.push(current);
///   current.premultBy(child);
///   ...
///   stack.pop(current);
/// \endcode
template <class Real>
class TmatrixStackOf : public TtypedStack<TmatrixOf<Real>>
{
};
