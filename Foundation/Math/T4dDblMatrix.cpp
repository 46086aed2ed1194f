#include "Foundation/Math/T4dDblMatrix.h"

#include "Foundation/Debug/TdebugOutput.h"

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace {

/// Four numbers in as many registers as every processor has for them.
template <class Real>
struct Row
{
  static constexpr int kParts = 4 * sizeof(Real) / 16, kLanes = 4 / kParts;
  typedef Real Part __attribute__((vector_size(16))); // NOLINT(modernize-use-using)
  Part parts[kParts];

  Real operator[](int i) const { return parts[i / kLanes][i % kLanes]; }

  template <class Parts>
  static Row of(Parts part)
  {
    Row row;
    for (int i = 0; i < kParts; ++i)
      row.parts[i] = part(i);
    return row;
  }
  Row operator*(const Row& other) const
  {
    return of([&](int i) { return parts[i] * other.parts[i]; });
  }
  Row operator+(const Row& other) const
  {
    return of([&](int i) { return parts[i] + other.parts[i]; });
  }
  Row operator-(const Row& other) const
  {
    return of([&](int i) { return parts[i] - other.parts[i]; });
  }
  Row operator*(Real factor) const
  {
    return of([&](int i) { return parts[i] * factor; });
  }

  // From a column on, at least.
  void subtract(Real factor, const Row& other, int from = 0)
  {
    for (int i = from / kLanes; i < kParts; ++i)
      parts[i] -= factor * other.parts[i];
  }
  void divideBy(Real divisor, int from = 0)
  {
    for (int i = from / kLanes; i < kParts; ++i)
      parts[i] /= divisor;
  }
};

} // namespace

template <class Real>
TmatrixOf<Real>& TmatrixOf<Real>::invertIt() noexcept
{
  // In the end the identity and the inverse, but what nothing reads again of a is not kept up. With constant columns
  // all the loops are unrolled, and the numbers stay in registers.
  Row<Real> a[4], b[4];
  std::memcpy(a, fRows, sizeof a);
  std::memcpy(b, identity.fRows, sizeof b);
  const auto isPivot = [](Real number) { return !(Tcomponents::magnitude(number) <= Traits::kNoPivot); };
  const auto eliminate = [&](auto column) {
    constexpr int j = column;
    int pivot = j;
    Real most = a[j][j] * a[j][j];
    for (int i = j + 1; i < 4; ++i)
    {
      const Real square = a[i][j] * a[i][j];
      pivot = square > most ? i : pivot;
      most = square > most ? square : most;
    }
    if (pivot != j)
    {
      std::swap(a[j], a[pivot]);
      std::swap(b[j], b[pivot]);
    }
    for (int i = j + 1; i < 4 && isPivot(a[j][j]); ++i)
    {
      const Real factor = a[i][j] / a[j][j];
      a[i].subtract(factor, a[j], j + 1);
      b[i].subtract(factor, b[j]);
    }
  };
  eliminate(std::integral_constant<int, 0>());
  eliminate(std::integral_constant<int, 1>());
  eliminate(std::integral_constant<int, 2>());
  for (int i = 0; i < 4; ++i)
  {
    const Real pivot = a[i][i];
    if (!isPivot(pivot))
      continue;
    a[i].divideBy(pivot, i + 1);
    b[i].divideBy(pivot);
  }
  for (int j = 1; j < 4; ++j)
  {
    for (int i = 0; i < j; ++i)
    {
      const Real factor = a[i][j];
      a[i].subtract(factor, a[j], j + 1);
      b[i].subtract(factor, b[j]);
    }
  }
  std::memcpy(fRows, b, sizeof b);
  return *this;
}

template <>
TmatrixOf<float>& TmatrixOf<float>::fastInvertInLanes() noexcept
{
  // In lane k the numbers that column k of the adjugate is made of: by columns of this matrix, with the sign that the
  // cofactors take, and those of the rows that the minors are of.
  using Part = Row<float>::Part;
  Row<float> own[4], first[4], second[4];
  Part rows[4];
  std::memcpy(rows, fRows, sizeof rows);
  const Part xy01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5),
             zw01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7),
             xy23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5),
             zw23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
  const Part columns[4] = {
    __builtin_shufflevector(xy01, xy23, 0, 1, 4, 5), __builtin_shufflevector(xy01, xy23, 2, 3, 6, 7),
    __builtin_shufflevector(zw01, zw23, 0, 1, 4, 5), __builtin_shufflevector(zw01, zw23, 2, 3, 6, 7)};
  for (int j = 0; j < 4; ++j)
  {
    own[j].parts[0] = __builtin_shufflevector(columns[j], columns[j], 1, 0, 3, 2) * Part{1, -1, 1, -1};
    first[j].parts[0] = __builtin_shufflevector(columns[j], columns[j], 2, 2, 0, 0);
    second[j].parts[0] = __builtin_shufflevector(columns[j], columns[j], 3, 3, 1, 1);
  }
  const Tminors<Row<float>> d = minorsOf(first, second);
  const auto lane = [&d](int i) { return Tminors<float>{d.m01[i], d.m02[i], d.m03[i], d.m12[i], d.m13[i], d.m23[i]}; };
  const float determinant = determinantOf(lane(2), lane(0));
  if (!(determinant > Traits::kNoFastInverse))
    return invertIt();
  std::array<Row<float>, 4> inverse = cofactors(own, d);
  for (Row<float>& row : inverse)
    row = row * (1 / determinant);
  std::memcpy(fRows, inverse.data(), sizeof fRows);
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
