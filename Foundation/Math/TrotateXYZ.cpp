#include "Foundation/Math/TrotateXYZ.h"

#include "Foundation/Math/Tquaternion.h"

// Below, i, j and k are the axes that turn first, second and third, and e tells whether they follow each other as x, y
// and z do (1) or the other way round (-1). About i an angle turns j to k if e is 1. So the product of the three is
//
//   m[i] = (i: cos j cos k, j: e cos j sin k, k: -e sin j)
//
// and without the third rotation its column j is (j: cos i, k: -e sin i).

TrotateXYZ::TrotateXYZ(const T4dDblMatrix& m, Order order) noexcept
  : fOrder(order)
{
  const unsigned int i = axis(0), j = axis(1), k = axis(2);
  const double e = order < kXZY ? 1 : -1;
  const double cosine = std::hypot(m[i][i], m[i][j]);
  fRadians[j] = std::atan2(-e * m[i][k], cosine);
  fRadians[k] = cosine > 1e-15 ? std::atan2(e * m[i][j], m[i][i]) : 0;
  // From what the third rotation leaves, not from the small numbers that hold the first near the poles.
  const double c = std::cos(fRadians[k]), s = std::sin(fRadians[k]);
  const auto rest = [&](unsigned int row) { return m[row][j] * c - e * m[row][i] * s; };
  fRadians[i] = std::atan2(-e * rest(k), rest(j));
}

TrotateXYZ::TrotateXYZ(const Tquaternion& q, Order order) noexcept
  : TrotateXYZ(q.asMatrix(), order)
{
}

T4dDblMatrix TrotateXYZ::asMatrix() const noexcept
{
  T4dDblMatrix m;
  for (int step = 0; step < 3; ++step)
  {
    const Taxis about = axis(step);
    const unsigned int j = (about + 1) % 3, k = (about + 2) % 3;
    T4dDblMatrix turn;
    turn[j][j] = turn[k][k] = std::cos(fRadians[about]);
    turn[j][k] = std::sin(fRadians[about]);
    turn[k][j] = -turn[j][k];
    m.affinePostmultBy(turn);
  }
  return m;
}

Tquaternion TrotateXYZ::asQuaternion() const noexcept
{
  Tquaternion q;
  for (int step = 0; step < 3; ++step)
  {
    const Taxis about = axis(step);
    Tquaternion turn(0, 0, 0, std::cos(fRadians[about] / 2));
    turn.array()[about] = std::sin(fRadians[about] / 2);
    q *= turn;
  }
  return q;
}

std::ostream& operator<<(std::ostream& out, const TrotateXYZ& r)
{
  out << '<' << r.x().degrees() << ", " << r.y().degrees() << ", " << r.z().degrees() << "> ";
  for (int step = 0; step < 3; ++step)
    out << "XYZ"[r.axis(step)];
  return out;
}
