/// \file
/// Tquaternion: a rotation that composes and interpolates well.
///
/// Use it for turning things by steps and between poses, TrotateXYZ for the angles that an animator sees, and a matrix
/// to transform many points. Four packed doubles. The main trap: only a quaternion of length 1 is a rotation; what the
/// constructors and operations here make of rotations is one up to rounding, so normalise after thousands of products.

#pragma once

#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Platform/Export.h"

/// Components x, y, z (the axis times the sine of half the angle) and w (the cosine of half the angle); at first
/// (0, 0, 0, 1), which turns nothing. q and -q are the same rotation, but not equal.
///
/// \code
///   const Tquaternion turn(T4dDblVector::zAxis, Tangle(90, Tangle::kDegrees)); // x to y
///   const Tquaternion both = turn * tilt;                                      // turn first, as with matrices
///   const T4dDblVector direction = forward.rotateBy(both);
/// \endcode
class Tquaternion
{
public:
  static const Tquaternion identity;

  constexpr Tquaternion() noexcept = default;
  constexpr Tquaternion(double x, double y, double z, double w) noexcept
    : fComponents{x, y, z, w}
  {
  }

  /// About \p axis, of any length, right-handedly. About an axis without length nothing turns.
  FOUNDATION_API Tquaternion(const T4dDblVector& axis, Tangle angle) noexcept;

  /// The shortest rotation from one direction to another, which may have any length. Between opposite ones it is about
  /// some perpendicular axis; from or to a vector without length nothing turns.
  FOUNDATION_API Tquaternion(const T4dDblVector& from, const T4dDblVector& to) noexcept;

  /// The rotation in the upper 3x3 of \p m, which must not scale, shear or mirror.
  FOUNDATION_API explicit Tquaternion(const T4dDblMatrix& m) noexcept;

  /// The matrix that turns rows alike. The quaternion's length does not matter; that of length 0 gives the identity.
  FOUNDATION_API T4dDblMatrix asMatrix() const noexcept;

  constexpr double& x() noexcept { return fComponents[0]; }
  constexpr double& y() noexcept { return fComponents[1]; }
  constexpr double& z() noexcept { return fComponents[2]; }
  constexpr double& w() noexcept { return fComponents[3]; }
  constexpr double x() const noexcept { return fComponents[0]; }
  constexpr double y() const noexcept { return fComponents[1]; }
  constexpr double z() const noexcept { return fComponents[2]; }
  constexpr double w() const noexcept { return fComponents[3]; }

  /// All components, x first.
  constexpr double* array() noexcept { return fComponents; }
  constexpr const double* array() const noexcept { return fComponents; }

  /// The axis, of length 1, and the angle about it, from 0 to 360 degrees. What turns nothing has the zero vector.
  FOUNDATION_API T4dDblVector axis() const noexcept;
  Tangle angle() const noexcept { return Tangle(2 * std::atan2(imaginary().length(), w())); }

  /// The rotation by this one first and then by \p q: in the usual notation, q times this.
  constexpr Tquaternion operator*(const Tquaternion& q) const noexcept
  {
    const T4dDblVector a = imaginary(), b = q.imaginary();
    return {a * q.w() + b * w() + b.cross(a), w() * q.w() - a.dot(b)};
  }
  constexpr Tquaternion& operator*=(const Tquaternion& q) noexcept { return *this = *this * q; }

  /// The same rotation in other numbers.
  constexpr Tquaternion operator-() const noexcept { return {-x(), -y(), -z(), -w()}; }

  /// Back again; of any length but 0, which stays as it is.
  constexpr Tquaternion inverse() const noexcept
  {
    const double squared = norm();
    return squared == 0 ? *this : Tquaternion(-x() / squared, -y() / squared, -z() / squared, w() / squared);
  }
  constexpr Tquaternion& invertIt() noexcept { return *this = inverse(); }

  constexpr double dot(const Tquaternion& q) const noexcept
  {
    return x() * q.x() + y() * q.y() + z() * q.z() + w() * q.w();
  }

  /// The squared length.
  constexpr double norm() const noexcept { return dot(*this); }

  /// Makes the length 1, but leaves a quaternion without length.
  Tquaternion& normalizeIt() noexcept { return *this = normal(); }
  FOUNDATION_API Tquaternion normal() const noexcept;

  /// \p v, turned.
  constexpr T4dDblVector rotate(const T4dDblVector& v) const noexcept
  {
    const T4dDblVector u = imaginary(), t = u.cross(v) * 2;
    return v + t * w() + u.cross(t);
  }

  /// From \p a, for t = 0, to \p b, for t = 1, at constant speed and by the shorter way. Both must be rotations; other
  /// values of \p t go on beyond them.
  FOUNDATION_API static Tquaternion slerp(const Tquaternion& a, const Tquaternion& b, double t) noexcept;

  /// Whether all components are equal.
  constexpr bool operator==(const Tquaternion& q) const noexcept
  {
    return Tcomponents::same(fComponents, q.fComponents);
  }
  constexpr bool operator!=(const Tquaternion& q) const noexcept { return !(*this == q); }

  /// Whether the distance, in four dimensions, is at most \p tolerance.
  constexpr bool equivalent(const Tquaternion& q, double tolerance) const noexcept
  {
    return tolerance * tolerance >= Tcomponents::distance2(fComponents, q.fComponents);
  }

  friend std::ostream& operator<<(std::ostream& out, const Tquaternion& q)
  {
    return Tcomponents::write(out, q.fComponents, 4);
  }

private:
  constexpr Tquaternion(const T4dDblVector& imaginary, double w) noexcept
    : Tquaternion(imaginary.x(), imaginary.y(), imaginary.z(), w)
  {
  }
  constexpr T4dDblVector imaginary() const noexcept { return {x(), y(), z()}; }

  double fComponents[4] = {0, 0, 0, 1};
};

inline constexpr Tquaternion Tquaternion::identity{};

template <>
struct std::hash<Tquaternion> : TcomponentHash<Tquaternion, double, 4>
{
};

static_assert(sizeof(Tquaternion) == 32, "a quaternion is its components");

template <class Real>
template <class R, class>
TvectorOf<R> TvectorOf<Real>::rotateBy(const Tquaternion& rotation) const noexcept
{
  return rotation.rotate(*this);
}

template <class Real>
template <class R, class>
Tquaternion TvectorOf<Real>::rotateTo(const TvectorOf<R>& v) const noexcept
{
  return {*this, v};
}
