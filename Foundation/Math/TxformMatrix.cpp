#include "Foundation/Math/TxformMatrix.h"

namespace {

/// Makes \p rows perpendicular unit vectors r, and returns the lower triangle of factors that gives the rows back:
///
///   rows[0] = l[0][0] r[0];  rows[1] = l[1][0] r[0] + l[1][1] r[1];  rows[2] = l[2][0] r[0] + ...
///
/// On the diagonal nothing is 0 but for a row that is, so that the others may be divided by it.
struct Ttriangle
{
  double l[3][3] = {};

  explicit Ttriangle(T4dDblVector (&rows)[3]) noexcept
  {
    for (int i = 0; i < 3; ++i)
    {
      // Near 1, so that squares of the largest and the least numbers are numbers, too.
      const double most = std::fabs(rows[i].maxComponent());
      const int exponent = most > 0 && most < HUGE_VAL ? std::ilogb(most) : 0;
      const auto scaled = [exponent](double number) { return std::scalbn(number, -exponent); };
      const T4dDblVector row(scaled(rows[i].x()), scaled(rows[i].y()), scaled(rows[i].z()));
      T4dDblVector rest = row;
      for (int again = 0; again < 2; ++again) // the second time takes away what rounding has left
      {
        for (int j = 0; j < i; ++j)
          rest -= rows[j] * rest.dot(rows[j]);
      }
      for (int j = 0; j < i; ++j)
        l[i][j] = row.dot(rows[j]);
      const double length = rest.length(), least = 1e-14 * row.length();
      if (length > least)
        rows[i] = rest * (1 / length);
      else
        rows[i] = perpendicular(rows, i);
      l[i][i] = length > least ? length : least;
      for (double& factor : l[i])
        factor = std::scalbn(factor, exponent);
    }
  }

  /// A unit vector that is perpendicular to the first \p count rows.
  static T4dDblVector perpendicular(const T4dDblVector (&rows)[3], int count) noexcept
  {
    if (count == 0)
      return T4dDblVector::xAxis;
    if (count == 2)
      return rows[0].cross(rows[1]);
    const T4dDblVector& row = rows[0];
    const T4dDblVector beside = row.cross(std::fabs(row.y()) < 0.6 ? T4dDblVector::yAxis : T4dDblVector::zAxis);
    return beside * (1 / beside.length());
  }
};

} // namespace

T4dDblMatrix TxformMatrix::scaleAndShear() const noexcept
{
  const double x = fScale.x(), y = fScale.y(), z = fScale.z();
  return {x, 0, 0, 0, y * fShear.x(), y, 0, 0, z * fShear.y(), z * fShear.z(), z, 0, 0, 0, 0, 1};
}

T4dDblVector TxformMatrix::translationOf(const T4dDblMatrix& scaleAndShear, const T4dDblMatrix& rotation) const noexcept
{
  const T4dDblVector pivot = T4dDblVector(fScalePivot), moved = pivot - pivot * scaleAndShear;
  return (moved - T4dDblVector(fRotatePivot)) * rotation + T4dDblVector(fRotatePivot);
}

T4dDblMatrix TxformMatrix::compose() const noexcept
{
  const T4dDblMatrix linear = scaleAndShear(), rotation = fRotate.asMatrix();
  T4dDblMatrix m;
  m.affineProduct(linear, rotation);
  const T4dDblVector translation = translationOf(linear, rotation) + fTranslate;
  for (unsigned int i = 0; i < 3; ++i)
    m[3][i] = translation[i];
  return m;
}

bool TxformMatrix::decompose(const T4dDblMatrix& m) noexcept
{
  if (!m.isAffine())
    return false;
  T4dDblVector rows[3];
  for (unsigned int i = 0; i < 3; ++i)
    rows[i].set(m[i][0], m[i][1], m[i][2]);
  Ttriangle triangle(rows);
  auto& l = triangle.l;
  if (rows[0].cross(rows[1]).dot(rows[2]) < 0)
  {
    rows[0].invertIt();
    for (auto& row : l)
      row[0] = -row[0];
  }
  T4dDblMatrix rotation;
  for (unsigned int i = 0; i < 9; ++i)
    rotation[i / 3][i % 3] = rows[i / 3][i % 3];
  const auto quotient = [](double a, double b) { return b == 0 ? 0 : a / b; };
  fScale = Tscale(l[0][0], l[1][1], l[2][2]);
  fShear.set(quotient(l[1][0], l[1][1]), quotient(l[2][0], l[2][2]), quotient(l[2][1], l[2][2]));
  fRotate = TrotateXYZ(rotation, fRotate.order());
  fTranslate = T4dDblVector(m[3][0], m[3][1], m[3][2]) - translationOf(scaleAndShear(), fRotate.asMatrix());
  return true;
}

std::ostream& operator<<(std::ostream& out, const TxformMatrix& x)
{
  return out << "scale " << x.fScale << " at " << x.fScalePivot << ", shear " << x.fShear << ", rotate " << x.fRotate
             << " at " << x.fRotatePivot << ", translate " << x.fTranslate;
}
