/// \file
/// T4dDblVector and T4dFltVector: directions and displacements.
///
/// Use one for what a translation does not move, and a point for what it does. A vector is three packed numbers, and
/// every operation but those that take a square root or an angle is constexpr. The main trap: what is too short to be
/// normalised, and what is divided by almost nothing, stays as it is and nobody is told.

#pragma once

#include "Foundation/Math/GeometryTraits.h"
#include "Foundation/Math/Tangle.h"

#include <cmath>

class Tquaternion;
class TrotateXYZ;

/// Three components x, y and z; the fourth is 0 and not stored.
///
/// \code
///   T4dDblVector toward = target - eye;              // of two points
///   if (!toward.zeroLength(1e-9))
///     right = toward.cross(T4dDblVector::yAxis).normal();
///   normal = normal * model.convertForNormals();     // the upper 3x3 of a matrix
/// \endcode
///
/// Single precision: products of components, norm() and normalisation are computed in float; lengths, dot products,
/// distances and comparisons in double.
template <class Real>
class TvectorOf
{
  using Traits = TgeometryTraits<Real>;

public:
  /// The zero vector, which is the translation that moves nothing.
  static const TvectorOf identity;
  static const TvectorOf xAxis;
  static const TvectorOf yAxis;
  static const TvectorOf zAxis;

  constexpr TvectorOf() noexcept = default;
  constexpr TvectorOf(Real x, Real y, Real z) noexcept
    : fComponents{x, y, z}
  {
  }

  /// The components x, y and z. A weight is dropped, not divided by.
  template <class Other>
  constexpr explicit TvectorOf(const TvectorOf<Other>& v) noexcept
    : TvectorOf(Real(v.x()), Real(v.y()), Real(v.z()))
  {
  }
  template <class Other>
  constexpr explicit TvectorOf(const Tpoint3Of<Other>& p) noexcept
    : TvectorOf(Real(p.x()), Real(p.y()), Real(p.z()))
  {
  }
  template <class Other>
  constexpr explicit TvectorOf(const Tpoint4Of<Other>& p) noexcept
    : TvectorOf(Real(p.x()), Real(p.y()), Real(p.z()))
  {
  }
  constexpr explicit TvectorOf(const TtupleOf<Real>& t) noexcept
    : TvectorOf(t.x(), t.y(), t.z())
  {
  }

  constexpr void set(Real x, Real y, Real z) noexcept { *this = TvectorOf(x, y, z); }

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

  /// (x, y, z, 0)
  constexpr TtupleOf<Real> toTuple() const noexcept { return {x(), y(), z(), 0}; }

  /// The matrix that translates by this vector.
  constexpr operator TmatrixOf<Real>() const noexcept // NOLINT(google-explicit-constructor)
  {
    TmatrixOf<Real> translation;
    for (unsigned int i = 0; i < 3; ++i)
      translation[3][i] = fComponents[i];
    return translation;
  }

  /// Takes over the translation of \p m. A template, so that {} is the zero vector and no matrix.
  template <class R, class = std::enable_if_t<std::is_same_v<R, Real>>>
  constexpr TvectorOf& operator=(const TmatrixOf<R>& m) noexcept
  {
    return *this = TvectorOf(m[3][0], m[3][1], m[3][2]);
  }

  constexpr TvectorOf operator+(const TvectorOf& v) const noexcept { return {x() + v.x(), y() + v.y(), z() + v.z()}; }
  constexpr TvectorOf operator-(const TvectorOf& v) const noexcept { return {x() - v.x(), y() - v.y(), z() - v.z()}; }
  constexpr TvectorOf& operator+=(const TvectorOf& v) noexcept { return *this = *this + v; }
  constexpr TvectorOf& operator-=(const TvectorOf& v) noexcept { return *this = *this - v; }
  constexpr TtupleOf<Real> operator+(const TtupleOf<Real>& t) const noexcept { return toTuple() + t; }
  constexpr TtupleOf<Real> operator-(const TtupleOf<Real>& t) const noexcept { return toTuple() - t; }

  /// The opposite vector.
  constexpr TvectorOf operator-() const noexcept { return {-x(), -y(), -z()}; }
  constexpr TvectorOf inverse() const noexcept { return -*this; }
  constexpr TvectorOf& invertIt() noexcept { return *this = -*this; }

  constexpr TvectorOf operator*(Real factor) const noexcept { return {x() * factor, y() * factor, z() * factor}; }
  constexpr TvectorOf& operator*=(Real factor) noexcept { return *this = *this * factor; }
  friend constexpr TvectorOf operator*(Real factor, const TvectorOf& v) noexcept { return v * factor; }

  /// Divides, but leaves the vector as it is if the magnitude of \p divisor is at most 1e-10 (float: 1e-5).
  constexpr TvectorOf operator/(Real divisor) const noexcept
  {
    if (!Tcomponents::mayDivideBy(divisor))
      return *this;
    if constexpr (Traits::kMultipliesByReciprocal)
      return *this * (1 / divisor);
    return {x() / divisor, y() / divisor, z() / divisor};
  }
  constexpr TvectorOf& operator/=(Real divisor) noexcept { return *this = *this / divisor; }

  /// The dot product, under three names.
  constexpr double dot(const TvectorOf& v) const noexcept
  {
    return double(x()) * v.x() + double(y()) * v.y() + double(z()) * v.z();
  }
  constexpr double dotProduct(const TvectorOf& v) const noexcept { return dot(v); }
  constexpr double operator*(const TvectorOf& v) const noexcept { return dot(v); }

  /// The right-handed cross product, under three names.
  constexpr TvectorOf cross(const TvectorOf& v) const noexcept
  {
    return {y() * v.z() - z() * v.y(), z() * v.x() - x() * v.z(), x() * v.y() - y() * v.x()};
  }
  constexpr TvectorOf crossProduct(const TvectorOf& v) const noexcept { return cross(v); }
  constexpr TvectorOf operator^(const TvectorOf& v) const noexcept { return cross(v); }
  constexpr TvectorOf& setToCrossProduct(const TvectorOf& a, const TvectorOf& b) noexcept { return *this = a.cross(b); }

  /// The squared length.
  constexpr Real norm() const noexcept { return x() * x() + y() * y() + z() * z(); }
  double length() const noexcept { return std::sqrt(dot(*this)); }

  /// The largest magnitude, in single precision, and parts of the others: between 0.92 and 1.09 times the length,
  /// for culling and sorting. What is too large or too small for a float counts as infinity or 0.
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr double approxLength() const noexcept
  {
    double most = Tcomponents::magnitude(x()), middle = Tcomponents::magnitude(y()),
           least = Tcomponents::magnitude(z());
    const auto order = [](double& high, double& low) {
      const double higher = high < low ? low : high;
      low = high < low ? high : low;
      high = higher;
    };
    order(most, middle);
    order(most, least);
    order(middle, least);
    return double(float(most)) + 0.34375 * middle + 0.25 * least;
  }

  /// The axis with the largest magnitude: of equal ones z, then y.
  constexpr Taxis dominantAxis() const noexcept
  {
    const Real a = Tcomponents::magnitude(x()), b = Tcomponents::magnitude(y()), c = Tcomponents::magnitude(z());
    if (b >= a)
      return b > c ? kY : kZ;
    return a > c ? kX : kZ;
  }

  /// The component on that axis, with its sign.
  constexpr Real maxComponent() const noexcept { return fComponents[dominantAxis()]; }

  /// Makes the length 1. A vector whose squared length is at most 1e-20 (float: 1e-10), or within 2e-10 of 1, stays as
  /// it is, so that normalising again and again changes nothing. One whose squared length overflows, from 1.3e154
  /// (float: 1.8e19) on, becomes 0.
  TvectorOf& normalizeIt() noexcept
  {
    const Real squared = norm();
    if (squared <= Traits::kNoNorm || Tcomponents::magnitude(squared - 1) <= kUnitNormTolerance)
      return *this;
    return *this *= 1 / std::sqrt(squared);
  }
  TvectorOf normal() const noexcept { return TvectorOf(*this).normalizeIt(); }

  /// Scales to \p length, which if negative also turns the vector round. False, and nothing changed, if the squared
  /// length is at most 1e-20. A squared length within 2e-10 * \p length of the wanted one is left.
  template <class R = Real, class = TdoubleOnly<R>>
  bool changeLengthTo(double length) noexcept
  {
    const double squared = norm();
    if (squared <= Traits::kNoNorm)
      return false;
    if (!(Tcomponents::magnitude(squared - length * length) <= kUnitNormTolerance * length))
      *this *= length / std::sqrt(squared);
    return true;
  }

  /// The projection on the direction of \p v.
  TvectorOf componentAlong(const TvectorOf& v) const noexcept
  {
    const TvectorOf direction = v.normal();
    return direction * Real(dot(direction));
  }

  /// Whether all components are equal.
  constexpr bool operator==(const TvectorOf& v) const noexcept { return Tcomponents::same(fComponents, v.fComponents); }
  constexpr bool operator!=(const TvectorOf& v) const noexcept { return !(*this == v); }

  /// Whether the distance is less than \p tolerance. Of points and tuples it may be just that.
  constexpr bool equivalent(const TvectorOf& v, Real tolerance) const noexcept
  {
    return Tcomponents::distance2(fComponents, v.fComponents) < double(tolerance) * tolerance;
  }

  /// Whether the dot product of the normals is within \p tolerance of 1 or -1. The zero vector has no direction.
  bool parallel(const TvectorOf& v, Real tolerance) const noexcept
  {
    return Tcomponents::magnitude(Tcomponents::magnitude(normal().dot(v.normal())) - 1) <= tolerance;
  }

  /// Whether a component is outside [-tolerance, tolerance].
  template <class R = Real, class = TdoubleOnly<R>>
  constexpr bool nonZero(double tolerance) const noexcept
  {
    const auto outside = [tolerance](double value) { return value < -tolerance || value > tolerance; };
    return outside(x()) || outside(y()) || outside(z());
  }

  /// Whether the length is at most \p tolerance.
  constexpr bool zeroLength(Real tolerance) const noexcept { return dot(*this) <= double(tolerance) * tolerance; }

  /// Whether the squared length is within twice \p tolerance of 1, which is about the length within \p tolerance.
  constexpr bool unitLength(Real tolerance) const noexcept
  {
    return Tcomponents::magnitude(dot(*this) - 1) <= 2 * double(tolerance);
  }

  /// The angle to \p v, from 0 to 180 degrees; 90 degrees where one has no length.
  template <class R = Real, class = TdoubleOnly<R>>
  Tangle angleBetween(const TvectorOf<R>& v) const noexcept
  {
    const double cosine = normal().dot(v.normal());
    if (cosine >= 1)
      return Tangle();
    return cosine <= -1 ? Tangle(180, Tangle::kDegrees) : Tangle(std::acos(cosine));
  }
  template <class R = Real, class = TdoubleOnly<R>>
  Tangle angle(const TvectorOf<R>& v) const noexcept
  {
    return angleBetween(v);
  }

  /// Turned about an axis, right-handedly: positive angles about z turn x to y. An angle of at most 1e-10, and an axis
  /// that is none, turn nothing.
  template <class R = Real, class = TdoubleOnly<R>>
  TvectorOf rotateBy(Taxis axis, double radians) const noexcept
  {
    if (Tcomponents::magnitude(radians) <= Traits::kNoDivisor || axis < kX || axis > kZ)
      return *this;
    const double c = std::cos(radians / 2), s = std::sin(radians / 2);
    const double cosine = c * c - s * s, sine = 2 * (s * c);
    const int i = (axis + 1) % 3, j = (axis + 2) % 3;
    TvectorOf turned = *this;
    turned.fComponents[i] = fComponents[i] * cosine - fComponents[j] * sine;
    turned.fComponents[j] = fComponents[i] * sine + fComponents[j] * cosine;
    return turned;
  }
  template <class R = Real, class = TdoubleOnly<R>>
  TvectorOf<R> rotateBy(const Tquaternion& rotation) const noexcept;
  template <class R = Real, class = TdoubleOnly<R>>
  TvectorOf<R> rotateBy(const TrotateXYZ& rotation) const noexcept;

  /// The shortest rotation from this direction to that of \p v.
  template <class R = Real, class = TdoubleOnly<R>>
  Tquaternion rotateTo(const TvectorOf<R>& v) const noexcept;

  /// The column product m * v and the row product v * m, the transformation, each with the upper 3x3 alone. The result
  /// may be \p v itself.
  constexpr TvectorOf& setToProduct(const TmatrixOf<Real>& m, const TvectorOf& v) noexcept
  {
    return *this = TvectorOf(m[0][0] * v.x() + m[0][1] * v.y() + m[0][2] * v.z(),
                             m[1][0] * v.x() + m[1][1] * v.y() + m[1][2] * v.z(),
                             m[2][0] * v.x() + m[2][1] * v.y() + m[2][2] * v.z());
  }
  constexpr TvectorOf& setToProduct(const TvectorOf& v, const TmatrixOf<Real>& m) noexcept
  {
    return *this = TvectorOf(v.x() * m[0][0] + v.y() * m[1][0] + v.z() * m[2][0],
                             v.x() * m[0][1] + v.y() * m[1][1] + v.z() * m[2][1],
                             v.x() * m[0][2] + v.y() * m[1][2] + v.z() * m[2][2]);
  }
  constexpr TvectorOf& premultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(m, *this); }
  constexpr TvectorOf& postmultBy(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr TvectorOf& operator*=(const TmatrixOf<Real>& m) noexcept { return setToProduct(*this, m); }
  constexpr TvectorOf operator*(const TmatrixOf<Real>& m) const noexcept { return TvectorOf().setToProduct(*this, m); }

  /// No vector becomes a matrix in a product.
  TvectorOf& operator*=(const TvectorOf& v) = delete;
  TtupleOf<Real> operator*(const TtupleOf<Real>& t) const = delete;

  friend std::ostream& operator<<(std::ostream& out, const TvectorOf& v)
  {
    return Tcomponents::write(out, v.fComponents, 3);
  }

private:
  Real fComponents[3] = {};
};

template <class Real>
inline constexpr TvectorOf<Real> TvectorOf<Real>::identity{0, 0, 0};
template <class Real>
inline constexpr TvectorOf<Real> TvectorOf<Real>::xAxis{1, 0, 0};
template <class Real>
inline constexpr TvectorOf<Real> TvectorOf<Real>::yAxis{0, 1, 0};
template <class Real>
inline constexpr TvectorOf<Real> TvectorOf<Real>::zAxis{0, 0, 1};

template <class Real>
struct std::hash<TvectorOf<Real>> : TcomponentHash<TvectorOf<Real>, Real, 3>
{
};

static_assert(sizeof(T4dDblVector) == 24 && sizeof(T4dFltVector) == 12, "a vector is its components");

// What the templates above need where they are used.
#include "Foundation/Math/T3dDblPoint.h"
#include "Foundation/Math/T4dDblMatrix.h"
#include "Foundation/Math/T4dDblPoint.h"
#include "Foundation/Math/Ttuple.h"

#include "Foundation/Math/Tquaternion.h"
#include "Foundation/Math/TrotateXYZ.h"
