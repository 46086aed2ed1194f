#include "Foundation/Math/T4dDblMatrix.h"

#include "Foundation/Debug/TdebugOutput.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace {

/// Four numbers in as many registers as every processor has for them.
template <class Real>
struct Row
{
  static constexpr int kParts = 4 * sizeof(Real) / 16;
  typedef Real Part __attribute__((vector_size(16))); // NOLINT(modernize-use-using)
  Part parts[kParts];

  Real operator[](int i) const { return parts[i * kParts / 4][i % (4 / kParts)]; }
  void subtract(Real factor, const Row& other)
  {
    for (int i = 0; i < kParts; ++i)
      parts[i] -= factor * other.parts[i];
  }
  void divideBy(Real divisor)
  {
    for (Part& part : parts)
      part /= divisor;
  }
};

} // namespace

template <class Real>
TmatrixOf<Real>& TmatrixOf<Real>::invertIt() noexcept
{
  constexpr Real kNoPivot = Traits::kNoPivot;
  // In the end the identity and the inverse. Left of the column that is at hand nothing of a is read again.
  Row<Real> a[4], b[4];
  std::memcpy(a, fRows, sizeof a);
  std::memcpy(b, identity.fRows, sizeof b);
  for (int j = 0; j < 4; ++j)
  {
    int pivot = j;
    for (int i = j + 1; i < 4; ++i)
      pivot = a[i][j] * a[i][j] > a[pivot][j] * a[pivot][j] ? i : pivot;
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
      a[i].subtract(factor, a[j]);
      b[i].subtract(factor, b[j]);
    }
  }
  for (int i = 0; i < 4; ++i)
  {
    const Real pivot = a[i][i];
    if (Tcomponents::magnitude(pivot) <= kNoPivot)
      continue;
    a[i].divideBy(pivot);
    b[i].divideBy(pivot);
  }
  for (int j = 1; j < 4; ++j)
  {
    for (int i = 0; i < j; ++i)
    {
      const Real factor = a[i][j];
      a[i].subtract(factor, a[j]);
      b[i].subtract(factor, b[j]);
    }
  }
  std::memcpy(fRows, b, sizeof b);
  return *this;
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
