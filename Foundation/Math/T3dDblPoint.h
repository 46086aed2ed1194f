/// \file
/// T3dDblPoint and T3dFltPoint: places in space.
///
/// Use one for every point that needs no weight. A point is three packed numbers, and its operations are constexpr but
/// for distanceTo(). The main trap: multiplied by a projective matrix it is not divided by the weight that results; use
/// T4dDblPoint for that.

#pragma once

#include "Foundation/Math/GeometryTraits.h"

/// Three components x, y and z; the fourth, the weight, is 1 and not stored.
///
/// \code
///   const T3dDblPoint moved = corner * model;          // a row times a matrix: translated too
///   const T4dDblVector edge = moved - T3dDblPoint::origin;
/// \endcode
///
/// The difference of points is a vector, a point and a vector make a point; what is a sum or multiple of points is a
/// tuple.
template <class Real>
class Tpoint3Of
{
public:
  static const Tpoint3Of origin;

  constexpr Tpoint3Of() noexcept = default;
  constexpr Tpoint3Of(Real x, Real y, Real z) noexcept
    : fComponents{x, y, z}
  {
  }
  template <class Other>
  constexpr explicit Tpoint3Of(const Tpoint3Of<Other>& p) noexcept
    : Tpoint3Of(Real(p.x()), Real(p.y()), Real(p.z()))
  {
  }

  /// The same place: a weight is divided by.
  template <class Other>
  constexpr explicit Tpoint3Of(const Tpoint4Of<Other>& p) noexcept
  {
    const Tpoint4Of<Other> place = p.cartesian();
    set(Real(place.x()), Real(place.y()), Real(place.z()));
  }

  /// The place that the vector leads to from the origin.
  template <class Other>
  constexpr explicit Tpoint3Of(const TvectorOf<Other>& v) noexcept
    : Tpoint3Of(Real(v.x()), Real(v.y()), Real(v.z()))
  {
  }

  constexpr void set(Real x, Real y, Real z) noexcept { *this = Tpoint3Of(x, y, z); }

  /// The component at \p index, which is not checked.
  constexpr Real& operator[](unsigned int index) noexcept { return fComponents[index]; }
  constexpr Real operator[](unsigned int index) const noexcept { return fComponents[index]; }
  constexpr Real& operator()(short index) noexcept { return fComponents[index]; }
  constexpr Real operator()(short index) const noexcept { return fComponents[index]; }

  constexpr Real& x() noexcept { return fComponents[0]; }
  constexpr Real& y() noexcept { return fComponents[1]; }
  constexpr Real& z() noexcept { return fComponents[2]; }
  constexpr Real x() const noexcept { return fComponents[0]; }
  constexpr Real y() const noexcept { return fComponents[1]; }
  constexpr Real z() const noexcept { return fComponents[2]; }

  /// All components, x first.
  constexpr Real* array() noexcept { return fComponents; }
  constexpr const Real* array() const noexcept { return fComponents; }

  /// (x, y, z, 1)
  constexpr TtupleOf<Real> toTuple() const noexcept { return *this; }

  /// To the other point from here comes the opposite vector.
  constexpr TvectorOf<Real> operator-(const Tpoint3Of& p) const noexcept
  {
    return {x() - p.x(), y() - p.y(), z() - p.z()};
  }
  constexpr TvectorOf<Real> operator-(const Tpoint4Of<Real>& p) const noexcept { return Tpoint4Of<Real>(*this) - p; }

  constexpr Tpoint3Of operator+(const TvectorOf<Real>& v) const noexcept
  {
    return {x() + v.x(), y() + v.y(), z() + v.z()};
  }
  constexpr Tpoint3Of operator-(const TvectorOf<Real>& v) const noexcept
  {
    return {x() - v.x(), y() - v.y(), z() - v.z()};
  }
  constexpr Tpoint3Of& operator+=(const TvectorOf<Real>& v) noexcept { return *this = *this + v; }
  constexpr Tpoint3Of& operator-=(const TvectorOf<Real>& v) noexcept { return *this = *this - v; }

  /// Weighted points. The sum takes points too.
  constexpr TtupleOf<Real> operator+(const TtupleOf<Real>& t) const noexcept { return toTuple() + t; }
  constexpr TtupleOf<Real> operator-(const TtupleOf<Real>& t) const noexcept { return toTuple() - t; }
  constexpr TtupleOf<Real> operator*(Real factor) const noexcept { return toTuple() * factor; }
  constexpr TtupleOf<Real> operator/(Real divisor) const noexcept { return toTuple() / divisor; }
  friend constexpr TtupleOf<Real> operator*(Real factor, const Tpoint3Of& p) noexcept { return p * factor; }

  double distanceTo(const Tpoint3Of& p) const noexcept { return (*this - p).length(); }
  double distanceTo(const Tpoint4Of<Real>& p) const noexcept { return (*this - p).length(); }

  /// The squared distance.
  constexpr double distance2To(const Tpoint3Of& p) const noexcept { return (*this - p).dot(*this - p); }
  constexpr double distance2To(const Tpoint4Of<Real>& p) const noexcept { return (*this - p).dot(*this - p); }

  /// Whether all components are equal.
  constexpr bool operator==(const Tpoint3Of& p) const noexcept { return Tcomponents::same(fComponents, p.fComponents); }
  constexpr bool operator!=(const Tpoint3Of& p) const noexcept { return !(*this == p); }

  /// Whether the distance is at most \p tolerance.
  constexpr bool equivalent(const Tpoint3Of& p, Real tolerance) const noexcept
  {
    return double(tolerance) * tolerance >= Tcomponents::distance2(fComponents, p.fComponents);
  }

  /// The column product m * p and the row product p * m, the transformation, without the weight that results. The
  /// result may be \p p itself.
  constexpr Tpoint3Of& setToProduct(const TmatrixOf<Real>& m, const Tpoint3Of& p) noexcept
  {
    return *this = Tpoint3Of(m[0][0] * p.x() + m[0][1] * p.y() + m[0][2] * p.z() + m[0][3],
                             m[1][0] * p.x() + m[1][1] * p.y() + m[1][2] * p.z() + m[1][3],
                             m[2][0] * p.x() + m[2][1] * p.y() + m[2][2] * p.z() + m[2][3]);
  }
  constexpr Tpoint3Of& setToProduct(const Tpoint3Of& p, const TmatrixOf<Real>& m) noexcept
  {
    return *this = Tpoint3Of(p.x() * m[0][0] + p.y() * m[1][0] + p.z() * m[2][0] + m[3][0],
                             p.x() * m[0][1] + p.y() * m[1][1] + p.z() * m[2][1] + m[3][1],
                             p.x() * m[0][2] + p.y() * m[1][2] + p.z() * m[2][2] + m[3][2]);
  }
  constexpr Tpoint3Of& premultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(m, *this); }
  constexpr Tpoint3Of& postmultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr Tpoint3Of& operator*=(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr Tpoint3Of operator*(const TmatrixOf<Real>& m) const noexcept { return Tpoint3Of().setToProduct(*this, m); }

  /// No vector becomes a matrix in a product. To move, add it.
  Tpoint3Of& operator*=(const TvectorOf<Real>& v) = delete;
  Tpoint3Of operator*(const TvectorOf<Real>& v) const = delete;

  friend std::ostream& operator<<(std::ostream& out, const Tpoint3Of& p)
  {
    return Tcomponents::write(out, p.fComponents, 3);
  }

private:
  Real fComponents[3] = {};
};

template <class Real>
inline constexpr Tpoint3Of<Real> Tpoint3Of<Real>::origin{0, 0, 0};

template <class Real>
struct std::hash<Tpoint3Of<Real>> : TcomponentHash<Tpoint3Of<Real>, Real, 3>
{
};

static_assert(sizeof(T3dDblPoint) == 24 && sizeof(T3dFltPoint) == 12, "a point is its components");

// What the templates above need where they are used.
#include "Foundation/Math/T4dDblMatrix.h"
#include "Foundation/Math/T4dDblPoint.h"
#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Math/Ttuple.h"
