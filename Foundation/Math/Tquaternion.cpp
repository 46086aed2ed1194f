#include "Foundation/Math/Tquaternion.h"

namespace {

/// \p v with the length 1, or as it is if it has none. Unlike normal() it corrects the least deviation, and takes any
/// length.
T4dDblVector unit(const T4dDblVector& v)
{
  const double most = std::fabs(v.maxComponent());
  if (!(most > 0))
    return v;
  const T4dDblVector near1(v.x() / most, v.y() / most, v.z() / most);
  return near1 * (1 / near1.length());
}

/// A unit vector perpendicular to the unit vector \p v.
T4dDblVector perpendicular(const T4dDblVector& v)
{
  const bool alongX = std::fabs(v.x()) > 0.6;
  return unit(v.cross(alongX ? T4dDblVector::yAxis : T4dDblVector::xAxis));
}

} // namespace

Tquaternion::Tquaternion(const T4dDblVector& axis, Tangle angle) noexcept
{
  if (axis != T4dDblVector())
    *this = Tquaternion(unit(axis) * (angle / 2).sin(), (angle / 2).cos());
}

Tquaternion::Tquaternion(const T4dDblVector& from, const T4dDblVector& to) noexcept
{
  if (from == T4dDblVector() || to == T4dDblVector())
    return;
  // In the plane of both: to = a * cosine + b * sine. What is next to nothing has no direction of its own.
  const T4dDblVector a = unit(from), target = unit(to);
  const double cosine = a.dot(target);
  const T4dDblVector beside = target - a * cosine;
  const double sine = beside.length();
  T4dDblVector b = sine > 1e-15 ? beside * (1 / sine) : perpendicular(a);
  b = unit(b - a * a.dot(b));
  *this = Tquaternion(a.cross(b), Tangle(std::atan2(sine, cosine)));
}

Tquaternion::Tquaternion(const T4dDblMatrix& m) noexcept
{
  // The largest component first: it is the one to divide by.
  const double trace = m[0][0] + m[1][1] + m[2][2];
  unsigned int i = 0;
  for (unsigned int k = 1; k < 3; ++k)
    i = m[k][k] > m[i][i] ? k : i;
  if (trace >= m[i][i])
    *this = {m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0], 1 + trace};
  else
  {
    const unsigned int j = (i + 1) % 3, k = (i + 2) % 3;
    fComponents[i] = 1 + m[i][i] - m[j][j] - m[k][k];
    fComponents[j] = m[i][j] + m[j][i];
    fComponents[k] = m[i][k] + m[k][i];
    w() = m[j][k] - m[k][j];
  }
  normalizeIt();
}

T4dDblMatrix Tquaternion::asMatrix() const noexcept
{
  const double squared = norm();
  if (squared == 0)
    return {};
  const double s = 2 / squared;
  const double xx = x() * x() * s, yy = y() * y() * s, zz = z() * z() * s, xy = x() * y() * s, xz = x() * z() * s,
               yz = y() * z() * s, wx = w() * x() * s, wy = w() * y() * s, wz = w() * z() * s;
  return {1 - yy - zz, xy + wz,     xz - wy,     0, //
          xy - wz,     1 - xx - zz, yz + wx,     0, //
          xz + wy,     yz - wx,     1 - xx - yy, 0, 0, 0, 0, 1};
}

T4dDblVector Tquaternion::axis() const noexcept
{
  return unit(imaginary());
}

Tquaternion Tquaternion::normal() const noexcept
{
  const double length = std::sqrt(norm());
  return length > 0 ? Tquaternion(x() / length, y() / length, z() / length, w() / length) : *this;
}

Tquaternion Tquaternion::slerp(const Tquaternion& a, const Tquaternion& b, double t) noexcept
{
  const Tquaternion to = a.dot(b) < 0 ? -b : b;
  const auto sum = [&a, &to](double factorA, double factorB) {
    return Tquaternion(a.x() * factorA + to.x() * factorB, a.y() * factorA + to.y() * factorB,
                       a.z() * factorA + to.z() * factorB, a.w() * factorA + to.w() * factorB);
  };
  // Precise for small angles, of which the cosine is none but 1.
  const double angle = 2 * std::atan2(std::sqrt(sum(1, -1).norm()), std::sqrt(sum(1, 1).norm()));
  if (angle < 1e-8)
    return sum(1 - t, t).normal();
  return sum(std::sin((1 - t) * angle), std::sin(t * angle)).normal();
}
