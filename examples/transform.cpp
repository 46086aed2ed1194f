// Moves the corners of a cube through an object's transformation and a camera onto a screen.
#include <Foundation/Math/PointArrays.h>
#include <Foundation/Math/TpointStream.h>

#include <cmath>
#include <iostream>

int main()
{
  T3dDblPointArray corners;
  for (int i = 0; i < 8; ++i)
    corners.addLast(T3dDblPoint(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1));

  TxformMatrix object;
  object.scale() = Tscale(2, 1, 1);
  object.rotate().set(kZ, Tangle(90, Tangle::kDegrees));
  object.translate().set(0, 0, -10);
  const T4dDblMatrix model = object.compose();
  TpointStream::transform(corners.data(), corners.data(), corners.length(), model);

  T3dDblPoint low, high;
  if (TpointStream::bounds(corners.data(), corners.length(), low, high))
    std::cout << "The object is between " << low << " and " << high << ".\n";

  // Normals go another way. This one of the right side, x, now looks up, y.
  const T4dDblVector normal = (T4dDblVector::xAxis * model.convertForNormals()).normal();
  std::cout << "Its right side is " << normal.angle(T4dDblVector::yAxis) << " from up.\n";

  // Seen from the origin along -z: the projection makes the distance the weight.
  T4dDblMatrix projection;
  projection[2][3] = -1;
  projection[3][3] = 0;
  for (const T3dDblPoint& corner : corners)
  {
    const T4dDblPoint seen = (T4dDblPoint(corner) * projection).cartesian();
    std::cout << "  " << TdblPoint(seen.x(), seen.y()) << '\n';
  }
  const bool good = low.equivalent({-1, -2, -11}, 1e-12) && high.equivalent({1, 2, -9}, 1e-12) &&
                    normal.equivalent(T4dDblVector::yAxis, 1e-12);
  return good ? 0 : 1;
}
