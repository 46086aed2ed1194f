/// \file
/// TrotateXYZ: a rotation as three angles about the axes.
///
/// Use it for what people see and edit. Use Tquaternion to compose and to interpolate. The main trap: where the second
/// angle is 90 or -90 degrees, the others turn about one line, so that many angles make one rotation; taken from a
/// matrix, the angles still make that matrix, but may not be those that it was made from.

#pragma once

#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

/// Angles about x, y and z, and the order in which they turn: kXYZ about x first, then y, then z, axes that stay where
/// they are. All angles are 0 at first, the order kXYZ.
///
/// \code
///   const TrotateXYZ pose(Tangle(30, Tangle::kDegrees), Tangle(), Tangle(90, Tangle::kDegrees));
///   const T4dDblMatrix turn = pose.asMatrix();
/// \endcode
class TrotateXYZ
{
public:
  enum Order : int
  {
    kXYZ,
    kYZX,
    kZXY,
    kXZY,
    kYXZ,
    kZYX
  };

  static constexpr int kOrders = 6;

  constexpr TrotateXYZ() noexcept = default;
  constexpr TrotateXYZ(Tangle x, Tangle y, Tangle z, Order order = kXYZ) noexcept
    : fRadians{x.radians(), y.radians(), z.radians()}
    , fOrder(order)
  {
  }

  /// The angles that make a rotation: the upper 3x3 of \p m, which must not scale, shear or mirror. The second is from
  /// -90 to 90 degrees, the others from -180 to 180. Where the second is at an end, the third is 0.
  FOUNDATION_API explicit TrotateXYZ(const T4dDblMatrix& m, Order order = kXYZ) noexcept;
  FOUNDATION_API explicit TrotateXYZ(const Tquaternion& q, Order order = kXYZ) noexcept;

  FOUNDATION_API T4dDblMatrix asMatrix() const noexcept;
  FOUNDATION_API Tquaternion asQuaternion() const noexcept;

  /// The same rotation in another order.
  TrotateXYZ inOrder(Order order) const noexcept { return TrotateXYZ(asMatrix(), order); }

  constexpr Tangle x() const noexcept { return Tangle(fRadians[0]); }
  constexpr Tangle y() const noexcept { return Tangle(fRadians[1]); }
  constexpr Tangle z() const noexcept { return Tangle(fRadians[2]); }
  constexpr Tangle operator[](unsigned int axis) const noexcept { return Tangle(fRadians[axis]); }
  constexpr void set(Taxis axis, Tangle angle) noexcept { fRadians[axis] = angle.radians(); }
  constexpr Order order() const noexcept { return Order(fOrder); }

  /// The axis that turns first, second or third: \p step is 0, 1 or 2.
  constexpr Taxis axis(int step) const noexcept
  {
    return Taxis(fOrder < kXZY ? (fOrder + step) % 3 : (fOrder - kXZY + 3 - step) % 3);
  }

  /// The angles about x, y and z in radians.
  constexpr double* array() noexcept { return fRadians; }
  constexpr const double* array() const noexcept { return fRadians; }

  /// Whether angles and order are equal. The rotations may be the same without that.
  constexpr bool operator==(const TrotateXYZ& r) const noexcept
  {
    return Tcomponents::same(fRadians, r.fRadians) && fOrder == r.fOrder;
  }
  constexpr bool operator!=(const TrotateXYZ& r) const noexcept { return !(*this == r); }

  /// The angles about x, y and z in degrees, and the order, as "<30, 0, 90> XYZ".
  FOUNDATION_API friend std::ostream& operator<<(std::ostream& out, const TrotateXYZ& r);

private:
  double fRadians[3] = {};
  Tint64 fOrder = kXYZ; // as wide as an angle: arrays compare all bytes, and none may be unused
};

template <>
struct std::hash<TrotateXYZ>
{
  std::size_t operator()(const TrotateXYZ& r) const noexcept
  {
    return TcomponentHash<TrotateXYZ, double, 3>()(r) + std::size_t(r.order());
  }
};

static_assert(sizeof(TrotateXYZ) == 32, "three angles and the order, without a gap");

template <class Real>
template <class R, class>
TvectorOf<R> TvectorOf<Real>::rotateBy(const TrotateXYZ& rotation) const noexcept
{
  return *this * rotation.asMatrix();
}
