#include "Foundation/Math/T3dFltPoint.h"
#include "Foundation/Math/T4dFltPoint.h"
#include "Foundation/Math/T4dFltVector.h"
#include "Foundation/Math/TfltPoint.h"
#include "Foundation/Math/TfltTuple.h"
#include "tests/Math/Reference.h"

#include <sstream>
#include <tuple>

namespace {

template <class Real>
class Points : public testing::Test
{
};
TYPED_TEST_SUITE(Points, Precisions);

TYPED_TEST(Points, makeOneAnother)
{
  using Real = TypeParam;
  using Vector = TvectorOf<Real>;
  using Point3 = Tpoint3Of<Real>;
  using Point4 = Tpoint4Of<Real>;
  using Tuple = TtupleOf<Real>;
  const Vector v(1, 2, 3);
  const Point3 p(4, 6, 8);
  const Point4 q(2, 4, 6, 2);
  // Places, so weights are divided by.
  EXPECT_EQ(p - q, Vector(3, 4, 5));
  EXPECT_EQ(q - p, -Vector(3, 4, 5));
  EXPECT_EQ(q + v, Point4(2, 4, 6));
  EXPECT_EQ(q - v, Point4());
  EXPECT_EQ(q.distanceTo(p), std::sqrt(50));
  EXPECT_EQ(p.distance2To(q), 50);
  EXPECT_EQ(Point3(q), Point3(1, 2, 3));
  EXPECT_EQ(q.rational(), Point4(1, 2, 3, 2));
  EXPECT_EQ(q.rational().homogenous(), q);
  EXPECT_EQ(Point4(1, -1, 0, 0).cartesian().x(), std::numeric_limits<Real>::infinity());
  // Four components, which take part as they are.
  EXPECT_EQ(p + q, Tuple(6, 10, 14, 3));
  EXPECT_EQ(p - Tuple(p) - v, Tuple(-1, -2, -3, 0));
  EXPECT_EQ(p / 4, Tuple(1, 1.5, 2, 0.25));
  EXPECT_EQ(2 * q, Tuple(4, 8, 12, 4));
  EXPECT_EQ(Vector(q), Vector(2, 4, 6));
  EXPECT_EQ(Vector(v) = {}, Vector());

  EXPECT_FALSE(v.equivalent(Vector(1, 2, 5), 2)); // exactly at the tolerance: only points and tuples are
  EXPECT_TRUE(p.equivalent(Point3(4, 6, 10), 2));
  EXPECT_TRUE(q.equivalent(Point4(2, 4, 6, 4), 2));
  EXPECT_TRUE(Tuple(q).equivalent(Tuple(2, 4, 6, 4), 2));
  EXPECT_FALSE(q.equivalent(Point4(1, 2, 3), 1)); // the same place
  EXPECT_FALSE((TplanePointOf<Real>(1, 1).equivalent({1, 3}, 2)));
  EXPECT_TRUE((TplanePointOf<Real>(1, 1).equivalent({Real(2.9), Real(2.9)}, 2)));

  std::ostringstream text;
  text << Point4(1, 2, Real(0.5)) << p << TplanePointOf<Real>(1, 2);
  EXPECT_EQ(text.str(), "<1, 2, 0.5, 1><4, 6, 8><1, 2>");
  EXPECT_EQ(std::hash<Vector>()(Vector(0, 1, 2)), std::hash<Vector>()(Vector(-Real(0), 1, 2)));
  EXPECT_NE(std::hash<Vector>()(Vector(0, 1, 2)), std::hash<Vector>()(Vector(1, 0, 2)));
}

TYPED_TEST(Points, areLeftAloneWhereTheyAreDegenerate)
{
  using Real = TypeParam;
  using Vector = TvectorOf<Real>;
  const bool isDouble = sizeof(Real) == 8;
  const Real edge = Real(isDouble ? 1e-10 : 1e-5), behind = std::nextafter(edge, Real(1));
  const Vector v(1, 2, 3);
  EXPECT_EQ(v / -edge, v);
  EXPECT_NE(v / behind, v);
  EXPECT_EQ(v.toTuple() / edge, v.toTuple());
  EXPECT_NE(v.toTuple() / -behind, v.toTuple());
  EXPECT_TRUE(std::isnan((v / std::numeric_limits<Real>::quiet_NaN()).x()));
  // 1/3 and 3 * (1/3) tell a division from a product with the reciprocal.
  EXPECT_EQ((Vector(Real(5), 0, 0) / Real(49)).x(), isDouble ? Real(5) * (1 / Real(49)) : Real(5) / Real(49));
  EXPECT_EQ((Vector(Real(5), 0, 0).toTuple() / Real(49)).x(), Real(5) / Real(49));

  EXPECT_EQ(Vector(edge * Real(0.99), 0, 0).normal().x(), edge * Real(0.99)); // the square of edge is the threshold
  EXPECT_EQ(Vector(edge * Real(1.01), 0, 0).normal().x(), 1);
  const Real near1 = Real(1 + 5e-11);
  EXPECT_EQ(Vector(near1, 0, 0).normal().x(), near1);
  EXPECT_EQ(Vector(Real(1 + 1e-6), 0, 0).normal().x(), 1);
  EXPECT_FALSE(Vector().parallel(v, Real(0.5)));
  EXPECT_TRUE(v.parallel(v * -3, Real(1e-6)));
  EXPECT_FALSE(v.parallel(Vector(3, 2, 1), Real(0.2)));
  EXPECT_TRUE(Vector(0, 0, -2).zeroLength(2));
  EXPECT_FALSE(Vector(0, 1, -2).zeroLength(2));
  EXPECT_TRUE(Vector(0, Real(1.25), 0).unitLength(Real(0.28125))); // 1.5625 is 2 * 0.28125 from 1
  EXPECT_FALSE(Vector(0, Real(1.25), 0).unitLength(Real(0.28)));

  const std::pair<Vector, Taxis> axes[] = {
    {{1, 1, 0}, kY}, {{1, 0, 1}, kZ}, {{1, 1, 1}, kZ}, {{-3, 1, 2}, kX}, {{0, 0, 0}, kZ}};
  for (const auto& [vector, axis] : axes)
    EXPECT_TRUE(vector.dominantAxis() == axis && vector.maxComponent() == vector[unsigned(axis)]) << vector;
}

TEST(Vector, changesItsLengthAndTurns)
{
  const std::tuple<T4dDblVector, double, bool, T4dDblVector> cases[] = {
    {{0, 0, 0}, 5, false, {0, 0, 0}},
    {{0.9e-10, 0, 0}, 5, false, {0.9e-10, 0, 0}},
    {{3, 4, 0}, 5, true, {3, 4, 0}},
    {{3, 4, 0}, -10, true, {-6, -8, 0}},
    {{3, 4, 0}, 0, true, {0, 0, 0}},
    {{1 + 5e-11, 0, 0}, 1, true, {1 + 5e-11, 0, 0}}, // within 2e-10 times the length
    {{100 + 5e-10, 0, 0}, 100, true, {100, 0, 0}},   // 1e-7 off, where 2e-8 is allowed
  };
  for (const auto& [from, length, done, to] : cases)
  {
    T4dDblVector changed = from;
    EXPECT_EQ(changed.changeLengthTo(length), done) << from;
    EXPECT_EQ(changed, to) << from;
  }
  EXPECT_EQ(T4dDblVector(-2, 8, 4).approxLength(), 8 + 0.34375 * 4 + 0.25 * 2);
  EXPECT_EQ(T4dDblVector(0, 0.1, 0).approxLength(), 0.1F);
  EXPECT_TRUE(T4dDblVector(0, 0, -2).nonZero(1.9));
  EXPECT_FALSE(T4dDblVector(0, 0, -2).nonZero(2));
  EXPECT_EQ(T4dDblVector(3, 4, 0).componentAlong({0, 7, 0}), T4dDblVector(0, 4, 0));

  EXPECT_EQ(T4dDblVector(1, 0, 0).angleBetween({-2, 0, 0}).degrees(), 180);
  EXPECT_EQ(T4dDblVector(1, 1, 1).angle({1, 1, 1}).degrees(), 0);
  EXPECT_NEAR(T4dDblVector(1, 1, 0).angle({0, 0.1, 0}).degrees(), 45, 1e-13);
  const T4dDblVector v(1, 2, 3);
  EXPECT_EQ(v.rotateBy(kX, 1e-10), v);
  EXPECT_NE(v.rotateBy(kX, 1.01e-10), v);
  EXPECT_EQ(v.rotateBy(Taxis(3), 1), v);
  EXPECT_EQ(v.rotateBy(Taxis(-1), 1), v);
}

TEST(PlanePoint, wraps)
{
  Tpoint p(32767, 4);
  p.move(1, -4);
  EXPECT_EQ(p, Tpoint(-32768, 0));
}

// A vector becomes a matrix, but never in a product, nor does the product.
template <class M, class V>
concept Takes = requires(M m, V v)
{
  m *= v;
}
|| requires(M m, V v)
{
  M(m * v);
};
static_assert(!Takes<T4dDblMatrix, T4dDblVector> && !Takes<T4dFltMatrix, T4dFltVector>);
static_assert(!Takes<T4dFltMatrix, T4dDblVector> && Takes<T4dDblMatrix, T4dDblMatrix>);
static_assert(!Takes<T4dDblVector, T4dDblVector> && !Takes<T4dDblVector, Ttuple> && !Takes<Ttuple, T4dDblVector>);
static_assert(!Takes<T3dFltPoint, T4dFltVector> && !Takes<T4dDblPoint, T4dDblVector>);
static_assert(std::is_assignable_v<T4dFltVector&, T4dFltMatrix> && !std::is_assignable_v<T4dFltVector&, T4dDblMatrix>);
static_assert(std::is_convertible_v<T4dFltPoint, T4dDblPoint> && !std::is_convertible_v<T4dDblPoint, T4dFltPoint>);

} // namespace
