#include "Foundation/Math/T4dDblMatrix.h"

#include "Foundation/Debug/TdebugOutput.h"

#include <cstdint>
#include <utility>

namespace {

/// a - factor * b, from column \p first on.
template <class Real>
void subtractRow(Real (&a)[4], Real factor, const Real (&b)[4], int first)
{
  for (int i = first; i < 4; ++i)
    a[i] -= factor * b[i];
}

} // namespace

template <class Real>
TmatrixOf<Real>& TmatrixOf<Real>::invertIt() noexcept
{
  constexpr Real kNoPivot = Traits::kNoPivot;
  TmatrixOf left = *this, right; // in the end the identity and the inverse
  auto& a = left.fRows;
  auto& b = right.fRows;
  // Left of column j no row of a is read again.
  for (int j = 0; j < 4; ++j)
  {
    int pivot = j;
    for (int i = j + 1; i < 4; ++i)
    {
      if (a[i][j] * a[i][j] > a[pivot][j] * a[pivot][j])
        pivot = i;
    }
    if (pivot != j)
    {
      std::swap(a[j], a[pivot]);
      std::swap(b[j], b[pivot]);
    }
    if (Tcomponents::magnitude(a[j][j]) <= kNoPivot)
      continue;
    for (int i = j + 1; i < 4; ++i)
    {
      const Real factor = a[i][j] / a[j][j];
      subtractRow(a[i], factor, a[j], j + 1);
      subtractRow(b[i], factor, b[j], 0);
    }
  }
  for (int i = 0; i < 4; ++i)
  {
    const Real pivot = a[i][i];
    if (Tcomponents::magnitude(pivot) <= kNoPivot)
      continue;
    for (int j = i + 1; j < 4; ++j)
      a[i][j] /= pivot;
    for (Real& component : b[i])
      component /= pivot;
  }
  for (int j = 1; j < 4; ++j)
  {
    for (int i = 0; i < j; ++i)
    {
      const Real factor = a[i][j];
      subtractRow(a[i], factor, a[j], j + 1);
      subtractRow(b[i], factor, b[j], 0);
    }
  }
  return *this = right;
}

template <class Real>
void TmatrixOf<Real>::debug(TdebugOutput& out, unsigned int) const
{
  // The address whole, as %#x writes numbers.
  out.beginSection("4x4 Matrix of doubles [%#llx]",
                   static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(this)));
  for (const Real(&row)[4] : fRows)
    out.print("| %g %g %g %g |\n", double(row[0]), double(row[1]), double(row[2]), double(row[3]));
  out.endSection();
}

template <class Real>
void TmatrixOf<Real>::debugMe(const TmatrixOf& m, unsigned int detail)
{
  m.debug(TdebugOutput::sCerr(), detail);
}

template FOUNDATION_API TmatrixOf<double>& TmatrixOf<double>::invertIt() noexcept;
template FOUNDATION_API TmatrixOf<float>& TmatrixOf<float>::invertIt() noexcept;
template FOUNDATION_API void TmatrixOf<double>::debug(TdebugOutput&, unsigned int) const;
template FOUNDATION_API void TmatrixOf<float>::debug(TdebugOutput&, unsigned int) const;
template FOUNDATION_API void TmatrixOf<double>::debugMe(const TmatrixOf<double>&, unsigned int);
template FOUNDATION_API void TmatrixOf<float>::debugMe(const TmatrixOf<float>&, unsigned int);
