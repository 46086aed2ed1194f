/// \file
/// T4dDblPoint and T4dFltPoint: homogeneous points.
///
/// Use one where a projective matrix or a rational curve needs the weight, and T3dDblPoint for all other points. The
/// operations are constexpr but for distanceTo(). The main trap: a point may be (2, 4, 6, 2) or (1, 2, 3, 1), which is
/// the same place for differences and distances, but not for ==, equivalent() and conversion to a vector.

#pragma once

#include "Foundation/Math/GeometryTraits.h"

/// Four components x, y, z and w; at first (0, 0, 0, 1).
///
/// \code
///   T4dDblPoint seen = corner * projection;
///   seen.cartesianizeIt(); // the perspective division
/// \endcode
template <class Real>
class Tpoint4Of
{
public:
  static const Tpoint4Of origin;

  constexpr Tpoint4Of() noexcept = default;
  constexpr Tpoint4Of(Real x, Real y, Real z, Real w = 1) noexcept
    : fComponents{x, y, z, w}
  {
  }
  constexpr Tpoint4Of(const Tpoint3Of<Real>& p) noexcept // NOLINT(google-explicit-constructor)
    : Tpoint4Of(p.x(), p.y(), p.z())
  {
  }

  /// The components as they are: x, y and z are not multiplied by the weight.
  constexpr Tpoint4Of(const TvectorOf<Real>& v, Real w) noexcept
    : Tpoint4Of(v.x(), v.y(), v.z(), w)
  {
  }
  constexpr explicit Tpoint4Of(const TtupleOf<Real>& t) noexcept
    : Tpoint4Of(t.x(), t.y(), t.z(), t.w())
  {
  }
  template <class Other>
  constexpr explicit Tpoint4Of(const Tpoint3Of<Other>& p) noexcept
    : Tpoint4Of(Real(p.x()), Real(p.y()), Real(p.z()))
  {
  }
  template <class Other>
  constexpr explicit Tpoint4Of(const Tpoint4Of<Other>& p) noexcept
    : Tpoint4Of(Real(p.x()), Real(p.y()), Real(p.z()), Real(p.w()))
  {
  }
  template <class Wider, class = std::enable_if_t<(sizeof(Wider) > sizeof(Real))>>
  constexpr operator Tpoint4Of<Wider>() const noexcept // NOLINT(google-explicit-constructor)
  {
    return {x(), y(), z(), w()};
  }

  constexpr void set(Real x, Real y, Real z, Real w = 1) noexcept { *this = Tpoint4Of(x, y, z, w); }

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

  constexpr TtupleOf<Real> toTuple() const noexcept { return *this; }

  /// Three forms of one place, of which the first may have any weight but 0:
  ///
  ///   homogeneous (x, y, z, w)  --rationalizeIt-->  rational (x/w, y/w, z/w, w)  --homogenizeIt-->  homogeneous
  ///               (x, y, z, w)  --cartesianizeIt--> cartesian (x/w, y/w, z/w, 1)
  ///
  /// A weight of exactly 1 changes nothing. One of 0 gives what the arithmetic gives: infinities and NaN.
  constexpr Tpoint4Of& cartesianizeIt() noexcept
  {
    rationalizeIt();
    w() = 1;
    return *this;
  }
  constexpr Tpoint4Of& rationalizeIt() noexcept { return w() == 1 ? *this : weight(1 / w()); }
  constexpr Tpoint4Of& homogenizeIt() noexcept { return w() == 1 ? *this : weight(w()); }
  constexpr Tpoint4Of cartesian() const noexcept { return Tpoint4Of(*this).cartesianizeIt(); }
  constexpr Tpoint4Of rational() const noexcept { return Tpoint4Of(*this).rationalizeIt(); }
  constexpr Tpoint4Of homogenous() const noexcept { return Tpoint4Of(*this).homogenizeIt(); }

  /// The vector between the cartesian forms.
  constexpr TvectorOf<Real> operator-(const Tpoint4Of& p) const noexcept
  {
    const Tpoint4Of a = cartesian(), b = p.cartesian();
    return {a.x() - b.x(), a.y() - b.y(), a.z() - b.z()};
  }
  constexpr TvectorOf<Real> operator-(const Tpoint3Of<Real>& p) const noexcept { return *this - Tpoint4Of(p); }

  /// The moved cartesian form.
  constexpr Tpoint4Of operator+(const TvectorOf<Real>& v) const noexcept
  {
    const Tpoint4Of a = cartesian();
    return {a.x() + v.x(), a.y() + v.y(), a.z() + v.z()};
  }
  constexpr Tpoint4Of operator-(const TvectorOf<Real>& v) const noexcept
  {
    const Tpoint4Of a = cartesian();
    return {a.x() - v.x(), a.y() - v.y(), a.z() - v.z()};
  }
  constexpr Tpoint4Of& operator+=(const TvectorOf<Real>& v) noexcept { return *this = *this + v; }
  constexpr Tpoint4Of& operator-=(const TvectorOf<Real>& v) noexcept { return *this = *this - v; }

  /// Weighted points: all four components take part. The sum takes points too.
  constexpr TtupleOf<Real> operator+(const TtupleOf<Real>& t) const noexcept { return toTuple() + t; }
  constexpr TtupleOf<Real> operator-(const TtupleOf<Real>& t) const noexcept { return toTuple() - t; }
  constexpr TtupleOf<Real> operator*(Real factor) const noexcept { return toTuple() * factor; }
  constexpr TtupleOf<Real> operator/(Real divisor) const noexcept { return toTuple() / divisor; }
  friend constexpr TtupleOf<Real> operator*(Real factor, const Tpoint4Of& p) noexcept { return p * factor; }

  /// Between the cartesian forms; the other is the squared distance. A T3dDblPoint will do too.
  double distanceTo(const Tpoint4Of& p) const noexcept { return (*this - p).length(); }
  constexpr double distance2To(const Tpoint4Of& p) const noexcept { return (*this - p).dot(*this - p); }

  /// Whether all components are equal.
  constexpr bool operator==(const Tpoint4Of& p) const noexcept { return Tcomponents::same(fComponents, p.fComponents); }
  constexpr bool operator!=(const Tpoint4Of& p) const noexcept { return !(*this == p); }

  /// Whether the distance, in four dimensions and without a division by the weights, is at most \p tolerance.
  constexpr bool equivalent(const Tpoint4Of& p, Real tolerance) const noexcept
  {
    return double(tolerance) * tolerance >= Tcomponents::distance2(fComponents, p.fComponents);
  }

  /// The column product m * p and the row product p * m, the transformation. The result may be \p p itself.
  constexpr Tpoint4Of& setToProduct(const TmatrixOf<Real>& m, const Tpoint4Of& p) noexcept
  {
    return *this = Tpoint4Of(m * p.toTuple());
  }
  constexpr Tpoint4Of& setToProduct(const Tpoint4Of& p, const TmatrixOf<Real>& m) noexcept
  {
    return *this = Tpoint4Of(p.toTuple() * m);
  }
  constexpr Tpoint4Of& premultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(m, *this); }
  constexpr Tpoint4Of& postmultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr Tpoint4Of& operator*=(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr Tpoint4Of operator*(const TmatrixOf<Real>& m) const noexcept { return Tpoint4Of().setToProduct(*this, m); }

  /// No vector becomes a matrix in a product. To move, add it.
  Tpoint4Of& operator*=(const TvectorOf<Real>& v) = delete;
  Tpoint4Of operator*(const TvectorOf<Real>& v) const = delete;

  friend std::ostream& operator<<(std::ostream& out, const Tpoint4Of& p)
  {
    return Tcomponents::write(out, p.fComponents, 4);
  }

private:
  constexpr Tpoint4Of& weight(Real factor) noexcept
  {
    x() *= factor;
    y() *= factor;
    z() *= factor;
    return *this;
  }

  Real fComponents[4] = {0, 0, 0, 1};
};

template <class Real>
inline constexpr Tpoint4Of<Real> Tpoint4Of<Real>::origin{0, 0, 0, 1};

template <class Real>
struct std::hash<Tpoint4Of<Real>> : TcomponentHash<Tpoint4Of<Real>, Real, 4>
{
};

static_assert(sizeof(T4dDblPoint) == 32 && sizeof(T4dFltPoint) == 16, "a point is its components");

// What the templates above need where they are used.
#include "Foundation/Math/T3dDblPoint.h"
#include "Foundation/Math/T4dDblMatrix.h"
#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Math/Ttuple.h"
