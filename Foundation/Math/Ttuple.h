/// \file
/// Ttuple and TfltTuple: weighted points, as sums and multiples of points are.
///
/// Use one to blend points: the sum of weighted points is a tuple whose w is the sum of the weights, and T4dDblPoint of
/// it, made cartesian, their mean. All operations are constexpr.

#pragma once

#include "Foundation/Math/GeometryTraits.h"

/// Four components x, y, z and w, all 0 at first. Points and vectors become tuples where one is wanted.
///
/// \code
///   const T3dDblPoint middle(T4dDblPoint(a + b)); // of two points: the tuple's w is 2
/// \endcode
template <class Real>
class TtupleOf
{
public:
  constexpr TtupleOf() noexcept = default;
  constexpr TtupleOf(Real x, Real y, Real z, Real w) noexcept
    : fComponents{x, y, z, w}
  {
  }
  constexpr TtupleOf(const TvectorOf<Real>& v) noexcept // NOLINT(google-explicit-constructor)
    : TtupleOf(v.x(), v.y(), v.z(), 0)
  {
  }
  constexpr TtupleOf(const Tpoint3Of<Real>& p) noexcept // NOLINT(google-explicit-constructor)
    : TtupleOf(p.x(), p.y(), p.z(), 1)
  {
  }
  constexpr TtupleOf(const Tpoint4Of<Real>& p) noexcept // NOLINT(google-explicit-constructor)
    : TtupleOf(p.x(), p.y(), p.z(), p.w())
  {
  }
  template <class Other>
  constexpr explicit TtupleOf(const TtupleOf<Other>& t) noexcept
    : TtupleOf(Real(t.x()), Real(t.y()), Real(t.z()), Real(t.w()))
  {
  }

  constexpr void set(Real x, Real y, Real z, Real w) noexcept { *this = TtupleOf(x, y, z, w); }
  constexpr void clear() noexcept { *this = TtupleOf(); }

  /// The component at \p index, which is not checked.
  constexpr Real& operator[](unsigned int index) noexcept { return fComponents[index]; }
  constexpr Real operator[](unsigned int index) const noexcept { return fComponents[index]; }
  constexpr Real& operator()(short index) noexcept { return fComponents[index]; }
  constexpr Real operator()(short index) const noexcept { return fComponents[index]; }

  constexpr Real& x() noexcept { return fComponents[0]; }
  constexpr Real& y() noexcept { return fComponents[1]; }
  constexpr Real& z() noexcept { return fComponents[2]; }
  constexpr Real& w() noexcept { return fComponents[3]; }
  constexpr Real x() const noexcept { return fComponents[0]; }
  constexpr Real y() const noexcept { return fComponents[1]; }
  constexpr Real z() const noexcept { return fComponents[2]; }
  constexpr Real w() const noexcept { return fComponents[3]; }

  /// All components, x first.
  constexpr Real* array() noexcept { return fComponents; }
  constexpr const Real* array() const noexcept { return fComponents; }

  constexpr TtupleOf operator+(const TtupleOf& t) const noexcept
  {
    return {x() + t.x(), y() + t.y(), z() + t.z(), w() + t.w()};
  }
  constexpr TtupleOf operator-(const TtupleOf& t) const noexcept
  {
    return {x() - t.x(), y() - t.y(), z() - t.z(), w() - t.w()};
  }
  constexpr TtupleOf& operator+=(const TtupleOf& t) noexcept { return *this = *this + t; }
  constexpr TtupleOf& operator-=(const TtupleOf& t) noexcept { return *this = *this - t; }
  constexpr TtupleOf operator-() const noexcept { return {-x(), -y(), -z(), -w()}; }

  constexpr TtupleOf operator*(Real factor) const noexcept
  {
    return {x() * factor, y() * factor, z() * factor, w() * factor};
  }
  constexpr TtupleOf& operator*=(Real factor) noexcept { return *this = *this * factor; }
  friend constexpr TtupleOf operator*(Real factor, const TtupleOf& t) noexcept { return t * factor; }

  /// Divides, but leaves the tuple as it is if the magnitude of \p divisor is at most 1e-10 (float: 1e-5).
  constexpr TtupleOf operator/(Real divisor) const noexcept
  {
    if (!Tcomponents::mayDivideBy(divisor))
      return *this;
    return {x() / divisor, y() / divisor, z() / divisor, w() / divisor};
  }
  constexpr TtupleOf& operator/=(Real divisor) noexcept { return *this = *this / divisor; }

  /// Whether all components are equal.
  constexpr bool operator==(const TtupleOf& t) const noexcept { return Tcomponents::same(fComponents, t.fComponents); }
  constexpr bool operator!=(const TtupleOf& t) const noexcept { return !(*this == t); }

  /// Whether the distance, in four dimensions, is at most \p tolerance.
  constexpr bool equivalent(const TtupleOf& t, Real tolerance) const noexcept
  {
    return double(tolerance) * tolerance >= Tcomponents::distance2(fComponents, t.fComponents);
  }

  /// The column product m * t and the row product t * m, the transformation. The result may be \p t itself.
  constexpr TtupleOf& setToProduct(const TmatrixOf<Real>& m, const TtupleOf& t) noexcept
  {
    return *this = TtupleOf(t.along(m[0]), t.along(m[1]), t.along(m[2]), t.along(m[3]));
  }
  constexpr TtupleOf& setToProduct(const TtupleOf& t, const TmatrixOf<Real>& m) noexcept
  {
    return *this = TtupleOf(t.across(m, 0), t.across(m, 1), t.across(m, 2), t.across(m, 3));
  }
  constexpr TtupleOf& premultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(m, *this); }
  constexpr TtupleOf& postmultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr TtupleOf& operator*=(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr TtupleOf operator*(const TmatrixOf<Real>& m) const noexcept { return TtupleOf().setToProduct(*this, m); }
  friend constexpr TtupleOf operator*(const TmatrixOf<Real>& m, const TtupleOf& t) noexcept
  {
    return TtupleOf().setToProduct(m, t);
  }

  /// No vector becomes a matrix in a product.
  TtupleOf& operator*=(const TvectorOf<Real>& v) = delete;
  TtupleOf operator*(const TvectorOf<Real>& v) const = delete;

  friend std::ostream& operator<<(std::ostream& out, const TtupleOf& t)
  {
    return Tcomponents::write(out, t.fComponents, 4);
  }

private:
  constexpr Real along(const Real* row) const noexcept
  {
    return row[0] * x() + row[1] * y() + row[2] * z() + row[3] * w();
  }
  constexpr Real across(const TmatrixOf<Real>& m, unsigned int column) const noexcept
  {
    return x() * m[0][column] + y() * m[1][column] + z() * m[2][column] + w() * m[3][column];
  }

  Real fComponents[4] = {};
};

template <class Real>
struct std::hash<TtupleOf<Real>> : TcomponentHash<TtupleOf<Real>, Real, 4>
{
};

static_assert(sizeof(Ttuple) == 32 && sizeof(TfltTuple) == 16, "a tuple is its components");

// What the templates above need where they are used.
#include "Foundation/Math/T3dDblPoint.h"
#include "Foundation/Math/T4dDblMatrix.h"
#include "Foundation/Math/T4dDblPoint.h"
#include "Foundation/Math/T4dDblVector.h"
