/// \file
/// T4dDblMatrix and T4dFltMatrix: the 4x4 matrices of transformations.
///
/// Use one to transform points and vectors, which are rows that stand to the left of it, and TxformMatrix to build one
/// from a scale, a rotation and a translation or to take it apart. A matrix is 16 packed numbers; products and
/// determinants are constexpr. The main traps: A * B applies A first; and a matrix that has no inverse gets one that
/// means nothing, so ask for the determinant where that may be.
///
///                 column  0    1    2    3
///     row 0  (x axis)   xx   xy   xz   0  \.
///     row 1  (y axis)   yx   yy   yz   0   > where the axes go; column 3, the projection,
///     row 2  (z axis)   zx   zy   zz   0  /  is (0, 0, 0, 1) in an affine matrix
///     row 3  (origin)   tx   ty   tz   1     the translation
///
/// In memory the rows follow each other. docs/geometry.md tells more.

#pragma once

#include "Foundation/Math/GeometryTraits.h"
#include "Foundation/Platform/Export.h"

#include <array>

class TdebugOutput;

/// Sixteen components m[row][column]; the identity at first.
///
/// \code
///   T4dDblMatrix model = T4dDblVector(0, 2, 0);       // a translation
///   model.premultBy(turn);                            // turned before it is moved
///   const T3dDblPoint p = corner * (model * camera);  // into the world, then into view
/// \endcode
///
/// Results may be written over operands. Single precision computes in float, determinants too; comparisons are in
/// double.
template <class Real>
class TmatrixOf
{
  using Traits = TgeometryTraits<Real>;

public:
  static const TmatrixOf identity;

  constexpr TmatrixOf() noexcept = default;

  /// Row by row.
  constexpr TmatrixOf(Real m00, Real m01, Real m02, Real m03, Real m10, Real m11, Real m12, Real m13, Real m20,
                      Real m21, Real m22, Real m23, Real m30, Real m31, Real m32, Real m33) noexcept
    : fRows{{m00, m01, m02, m03}, {m10, m11, m12, m13}, {m20, m21, m22, m23}, {m30, m31, m32, m33}}
  {
  }

  /// The product a * b.
  constexpr TmatrixOf(const TmatrixOf& a, const TmatrixOf& b) noexcept { setToProduct(a, b); }

  template <class R = Real, class = TfloatOnly<R>>
  constexpr explicit TmatrixOf(const TmatrixOf<double>& m) noexcept
  {
    *this = m;
  }
  template <class R = Real, class = TfloatOnly<R>>
  constexpr TmatrixOf& operator=(const TmatrixOf<double>& m) noexcept
  {
    copy(m, *this);
    return *this;
  }
  template <class R = Real, class = TfloatOnly<R>>
  constexpr TmatrixOf<double> T4dDblMatrixOf() const noexcept
  {
    TmatrixOf<double> m;
    copy(*this, m);
    return m;
  }

  constexpr TmatrixOf& setToIdentity() noexcept { return *this = TmatrixOf(); }

  /// The first component of a row, and one component. Indices are not checked.
  constexpr Real* operator[](unsigned int row) noexcept { return fRows[row]; }
  constexpr const Real* operator[](unsigned int row) const noexcept { return fRows[row]; }
  constexpr Real& operator()(short row, short column) noexcept { return fRows[row][column]; }
  constexpr Real operator()(short row, short column) const noexcept { return fRows[row][column]; }

  /// All 16 components, row 0 first.
  constexpr Real* array() noexcept { return fRows[0]; }
  constexpr const Real* array() const noexcept { return fRows[0]; }

  /// this = a * b: what a does, then what b does. The others are this * m and m * this.
  constexpr TmatrixOf& setToProduct(const TmatrixOf& a, const TmatrixOf& b) noexcept
  {
    const auto at = [&a, &b](int i, int j) {
      return a.fRows[i][0] * b.fRows[0][j] + a.fRows[i][1] * b.fRows[1][j] + a.fRows[i][2] * b.fRows[2][j] +
             a.fRows[i][3] * b.fRows[3][j];
    };
    return *this = TmatrixOf(at(0, 0), at(0, 1), at(0, 2), at(0, 3), at(1, 0), at(1, 1), at(1, 2), at(1, 3), at(2, 0),
                             at(2, 1), at(2, 2), at(2, 3), at(3, 0), at(3, 1), at(3, 2), at(3, 3));
  }
  constexpr TmatrixOf& postmultBy(const TmatrixOf& m) noexcept { return setToProduct(*this, m); }
  constexpr TmatrixOf& premultBy(const TmatrixOf& m) noexcept { return setToProduct(m, *this); }
  constexpr TmatrixOf& operator*=(const TmatrixOf& m) noexcept { return setToProduct(*this, m); }
  constexpr TmatrixOf operator*(const TmatrixOf& m) const noexcept { return {*this, m}; }

  /// A vector stands to the left: no vector becomes a matrix in a product. TvectorOf::premultBy() gives the column
  /// product.
  TmatrixOf& operator*=(const TvectorOf<Real>& v) = delete;
  TvectorOf<Real> operator*(const TvectorOf<Real>& v) const = delete;

  /// The product of affine matrices: column 3 is taken as (0, 0, 0, 1), whatever it holds, and becomes so.
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr TmatrixOf& affineProduct(const TmatrixOf& a, const TmatrixOf& b) noexcept
  {
    const auto at = [&a, &b](int i, int j) {
      return a.fRows[i][0] * b.fRows[0][j] + a.fRows[i][1] * b.fRows[1][j] + a.fRows[i][2] * b.fRows[2][j];
    };
    const Real(&moved)[4] = b.fRows[3];
    const Real z[4] = {at(0, 2), at(1, 2), at(2, 2), at(3, 2) + moved[2]};
    if (__builtin_is_constant_evaluated())
      return *this = TmatrixOf(at(0, 0), at(0, 1), z[0], 0, at(1, 0), at(1, 1), z[1], 0, at(2, 0), at(2, 1), z[2], 0,
                               at(3, 0) + moved[0], at(3, 1) + moved[1], z[3], 1);
    // The same with x and y in a register, which compilers do not find where rows are of three.
    using Pair [[gnu::vector_size(16), gnu::aligned(4), gnu::may_alias]] = double;
    const auto* const from = reinterpret_cast<const Pair*>(b.array());
    auto* const to = reinterpret_cast<Pair*>(array());
    const Real *const a0 = a[0], *const a1 = a[1], *const a2 = a[2], *const a3 = a[3];
    const Pair b0 = from[0], b1 = from[2], b2 = from[4], b3 = from[6];
    const Pair xy0 = a0[0] * b0 + a0[1] * b1 + a0[2] * b2, xy1 = a1[0] * b0 + a1[1] * b1 + a1[2] * b2,
               xy2 = a2[0] * b0 + a2[1] * b1 + a2[2] * b2, xy3 = a3[0] * b0 + a3[1] * b1 + a3[2] * b2 + b3;
    to[0] = xy0, to[1] = Pair{z[0], 0};
    to[2] = xy1, to[3] = Pair{z[1], 0};
    to[4] = xy2, to[5] = Pair{z[2], 0};
    to[6] = xy3, to[7] = Pair{z[3], 1};
    return *this;
  }
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr TmatrixOf& affinePostmultBy(const TmatrixOf& m) noexcept
  {
    return affineProduct(*this, m);
  }
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr TmatrixOf& affinePremultBy(const TmatrixOf& m) noexcept
  {
    return affineProduct(m, *this);
  }

  /// Of all 16 components.
  constexpr TmatrixOf& operator*=(Real factor) noexcept
  {
    for (auto& row : fRows)
    {
      for (Real& component : row)
        component *= factor;
    }
    return *this;
  }
  constexpr TmatrixOf operator*(Real factor) const noexcept { return TmatrixOf(*this) *= factor; }
  constexpr TmatrixOf& operator+=(const TmatrixOf& m) noexcept
  {
    for (int i = 0; i < 4; ++i)
    {
      for (int j = 0; j < 4; ++j)
        fRows[i][j] += m.fRows[i][j];
    }
    return *this;
  }
  constexpr TmatrixOf& operator-=(const TmatrixOf& m) noexcept
  {
    for (int i = 0; i < 4; ++i)
    {
      for (int j = 0; j < 4; ++j)
        fRows[i][j] -= m.fRows[i][j];
    }
    return *this;
  }

  // What ends in It changes the matrix and returns it; the same without It returns a changed copy.

  /// Inverts by elimination with row pivots. A column without a pivot of a magnitude above 1e-15 (float: 1e-5) is
  /// skipped, so that a singular matrix gets a finite result without a meaning, and zeros the identity.
  FOUNDATION_API TmatrixOf& invertIt() noexcept;
  TmatrixOf inverse() const noexcept { return TmatrixOf(*this).invertIt(); }

  /// The adjugate divided by the determinant, if that is above 1e-5 (float: above 0), and else invertIt(): matrices
  /// that mirror take that way too, and those whose products overflow so that the determinant is no number.
  TmatrixOf& fastInvertIt() noexcept
  {
    if constexpr (std::is_same_v<Real, float>)
      return fastInvertInLanes();
    const Tminors<Real> upper = minorsOf(fRows[0], fRows[1]), lower = minorsOf(fRows[2], fRows[3]);
    const Real determinant = determinantOf(upper, lower);
    return determinant > Traits::kNoFastInverse ? setToAdjugate(upper, lower, 1 / determinant) : invertIt();
  }
  TmatrixOf fastInverse() const noexcept { return TmatrixOf(*this).fastInvertIt(); }

  /// The adjugate: the cofactors, transposed.
  constexpr TmatrixOf& adjointIt() noexcept
  {
    return setToAdjugate(minorsOf(fRows[0], fRows[1]), minorsOf(fRows[2], fRows[3]), 1);
  }
  constexpr TmatrixOf adjoint() const noexcept { return TmatrixOf(*this).adjointIt(); }

  constexpr TmatrixOf& transposeIt() noexcept { return *this = transpose(); }
  constexpr TmatrixOf transpose() const noexcept
  {
    const auto& m = fRows;
    return {m[0][0], m[1][0], m[2][0], m[3][0], m[0][1], m[1][1], m[2][1], m[3][1],
            m[0][2], m[1][2], m[2][2], m[3][2], m[0][3], m[1][3], m[2][3], m[3][3]};
  }

  /// Takes scale and shear out of the upper 3x3: row 0 keeps its direction, row 1 its plane with row 0, row 2 becomes
  /// their right-handed normal.
  TmatrixOf& homogenizeIt() noexcept
  {
    const TvectorOf<Real> x = upper(0).normal(), z = x.cross(upper(1)).normal(), y = z.cross(x).normal();
    setUpper(0, x);
    setUpper(1, y);
    setUpper(2, z);
    return *this;
  }
  TmatrixOf homogenize() const noexcept { return TmatrixOf(*this).homogenizeIt(); }

  /// The matrix for normals: the inverse, by elimination, without translation, transposed. The normals' length is not
  /// kept.
  TmatrixOf& convertItForNormals() noexcept
  {
    clearTranslation();
    return invertIt().transposeIt();
  }
  TmatrixOf convertForNormals() const noexcept { return TmatrixOf(*this).convertItForNormals(); }

  /// The matrix for tangents: the same without translation.
  template <class R = Real, class = TfloatOnly<R>>
  constexpr TmatrixOf& convertItForTangents() noexcept
  {
    clearTranslation();
    return *this;
  }

  /// The determinants of the upper 3x3 and of the whole.
  constexpr Real det3x3() const noexcept
  {
    const auto& m = fRows;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[2][0] * m[1][2]) +
           m[0][2] * (m[1][0] * m[2][1] - m[2][0] * m[1][1]);
  }
  constexpr Real det4x4() const noexcept
  {
    const auto& m = fRows;
    if (m[0][3] == 0 && m[1][3] == 0 && m[2][3] == 0) // the same without the products that are 0
    {
      const auto minor = [&m](int i, int j) { return m[0][i] * m[1][j] - m[0][j] * m[1][i]; };
      return minor(0, 1) * (m[2][2] * m[3][3]) - minor(0, 2) * (m[2][1] * m[3][3]) + minor(1, 2) * (m[2][0] * m[3][3]);
    }
    return determinantOf(minorsOf(m[0], m[1]), minorsOf(m[2], m[3]));
  }

  /// Whether all components are equal.
  constexpr bool operator==(const TmatrixOf& m) const noexcept
  {
    return Tcomponents::same(fRows[0], m.fRows[0]) && Tcomponents::same(fRows[1], m.fRows[1]) &&
           Tcomponents::same(fRows[2], m.fRows[2]) && Tcomponents::same(fRows[3], m.fRows[3]);
  }
  constexpr bool operator!=(const TmatrixOf& m) const noexcept { return !(*this == m); }

  /// Whether each component differs by at most \p tolerance.
  constexpr bool equivalent(const TmatrixOf& m, Real tolerance) const noexcept
  {
    for (int i = 0; i < 4; ++i)
    {
      for (int j = 0; j < 4; ++j)
      {
        if (!(Tcomponents::magnitude(double(fRows[i][j]) - m.fRows[i][j]) <= tolerance))
          return false;
      }
    }
    return true;
  }

  /// Whether column 3 is (0, 0, 0, 1), each component within 1e-10.
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr bool isAffine() const noexcept
  {
    const auto negligible = [](double value) { return !(Tcomponents::magnitude(value) > 1e-10); };
    return negligible(fRows[0][3]) && negligible(fRows[1][3]) && negligible(fRows[2][3]) && negligible(fRows[3][3] - 1);
  }

  /// Whether the rows of the upper 3x3 are perpendicular to one another and equally long, which need not be 1; their
  /// dot products and squared lengths within 1e-10.
  constexpr bool isOrthogonal() const noexcept
  {
    const auto negligible = [](double value) { return !(Tcomponents::magnitude(value) > 1e-10); };
    const TvectorOf<Real> r0 = upper(0), r1 = upper(1), r2 = upper(2);
    return negligible(r0.dot(r0) - r1.dot(r1)) && negligible(r0.dot(r0) - r2.dot(r2)) && negligible(r0.dot(r1)) &&
           negligible(r1.dot(r2)) && negligible(r0.dot(r2));
  }

  /// Prints a section with a line per row: to \p out, or to the standard error output. The level of detail changes
  /// nothing.
  FOUNDATION_API void debug(TdebugOutput& out, unsigned int detail = 0) const;
  FOUNDATION_API static void debugMe(const TmatrixOf& m, unsigned int detail = 0);

  /// "<<1, 0, 0, 0>, ...>", row by row.
  friend std::ostream& operator<<(std::ostream& out, const TmatrixOf& m)
  {
    for (int i = 0; i < 4; ++i)
      Tcomponents::write(out << (i == 0 ? "<" : ", "), m.fRows[i], 4);
    return out << '>';
  }

private:
  // The determinants of the 2x2 matrices in two rows, by their columns.
  template <class Number>
  struct Tminors
  {
    Number m01, m02, m03, m12, m13, m23;
  };

  template <class Number>
  static constexpr Tminors<Number> minorsOf(const Number (&x)[4], const Number (&y)[4]) noexcept
  {
    return {x[0] * y[1] - x[1] * y[0], x[0] * y[2] - x[2] * y[0], x[0] * y[3] - x[3] * y[0],
            x[1] * y[2] - x[2] * y[1], x[1] * y[3] - x[3] * y[1], x[2] * y[3] - x[3] * y[2]};
  }

  static constexpr Real determinantOf(const Tminors<Real>& upper, const Tminors<Real>& lower) noexcept
  {
    return upper.m01 * lower.m23 - upper.m02 * lower.m13 + upper.m03 * lower.m12 + upper.m12 * lower.m03 -
           upper.m13 * lower.m02 + upper.m23 * lower.m01;
  }

  // A column of the adjugate: of the row with the components x and the two rows of the minors the determinants without
  // a column. Rows 1, 0, 3 and 2 give columns 0 to 3, of which 1 and 3 have the other sign.
  template <class Number>
  static constexpr std::array<Number, 4> cofactors(const Number (&x)[4], const Tminors<Number>& d) noexcept
  {
    return {x[1] * d.m23 - x[2] * d.m13 + x[3] * d.m12, x[2] * d.m03 - x[0] * d.m23 - x[3] * d.m02,
            x[0] * d.m13 - x[1] * d.m03 + x[3] * d.m01, x[1] * d.m02 - x[0] * d.m12 - x[2] * d.m01};
  }

  constexpr TmatrixOf& setToAdjugate(const Tminors<Real>& upper, const Tminors<Real>& lower, Real factor) noexcept
  {
    const Real minus0[4] = {-fRows[0][0], -fRows[0][1], -fRows[0][2], -fRows[0][3]};
    const Real minus2[4] = {-fRows[2][0], -fRows[2][1], -fRows[2][2], -fRows[2][3]};
    const std::array<Real, 4> a = cofactors(fRows[1], lower), b = cofactors(minus0, lower),
                              c = cofactors(fRows[3], upper), d = cofactors(minus2, upper);
    for (unsigned int i = 0; i < 4; ++i)
    {
      fRows[i][0] = a[i] * factor;
      fRows[i][1] = b[i] * factor;
      fRows[i][2] = c[i] * factor;
      fRows[i][3] = d[i] * factor;
    }
    return *this;
  }

  // fastInvertIt() of a float matrix, four numbers at a time. Of doubles two would fit, which gains nothing.
  FOUNDATION_API TmatrixOf& fastInvertInLanes() noexcept;

  constexpr TvectorOf<Real> upper(int row) const noexcept { return {fRows[row][0], fRows[row][1], fRows[row][2]}; }
  constexpr void setUpper(int row, const TvectorOf<Real>& v) noexcept
  {
    for (unsigned int i = 0; i < 3; ++i)
      fRows[row][i] = v[i];
  }
  constexpr void clearTranslation() noexcept { setUpper(3, TvectorOf<Real>()); }

  template <class From, class To>
  static constexpr void copy(const From& from, To& to) noexcept
  {
    for (unsigned int i = 0; i < 4; ++i)
    {
      for (unsigned int j = 0; j < 4; ++j)
        to[i][j] = static_cast<Real>(from[i][j]);
    }
  }

  Real fRows[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

template <class Real>
inline constexpr TmatrixOf<Real> TmatrixOf<Real>::identity{};

extern template TmatrixOf<double>& TmatrixOf<double>::invertIt() noexcept;
extern template TmatrixOf<float>& TmatrixOf<float>::invertIt() noexcept;
template <>
FOUNDATION_API TmatrixOf<float>& TmatrixOf<float>::fastInvertInLanes() noexcept;
extern template void TmatrixOf<double>::debug(TdebugOutput&, unsigned int) const;
extern template void TmatrixOf<float>::debug(TdebugOutput&, unsigned int) const;
extern template void TmatrixOf<double>::debugMe(const TmatrixOf<double>&, unsigned int);
extern template void TmatrixOf<float>::debugMe(const TmatrixOf<float>&, unsigned int);

template <class Real>
struct std::hash<TmatrixOf<Real>> : TcomponentHash<TmatrixOf<Real>, Real, 16>
{
};

static_assert(sizeof(T4dDblMatrix) == 128 && sizeof(T4dFltMatrix) == 64, "a matrix is its components");

// What the templates above need where they are used.
#include "Foundation/Math/T4dDblVector.h"
