#include "Foundation/Math/Tquaternion.h"
#include "Foundation/Math/TrotateXYZ.h"
#include "Foundation/Math/TxformMatrix.h"
#include "tests/Math/Reference.h"

#include <sstream>

namespace {

constexpr double kPi = Tangle::kPi;

T4dDblVector vectorOf(Random& random)
{
  return random.value<T4dDblVector, 3>();
}

Tquaternion rotationOf(Random& random)
{
  return Tquaternion(vectorOf(random), Tangle(random.number() * 2 * kPi));
}

T4dDblMatrix turnedByAxis(Taxis axis, Tangle angle)
{
  T4dDblMatrix m;
  const T4dDblVector rows[] = {T4dDblVector::xAxis, T4dDblVector::yAxis, T4dDblVector::zAxis};
  for (unsigned int i = 0; i < 9; ++i)
    m[i / 3][i % 3] = rows[i / 3].rotateBy(axis, angle.radians())[i % 3];
  return m;
}

TEST(Angle, isTheSameInEveryUnit)
{
  const std::pair<Tangle::Unit, double> units[] = {{Tangle::kRadians, 2 * kPi}, {Tangle::kDegrees, 360},
                                                   {Tangle::kMinutes, 21600},   {Tangle::kSeconds, 1296000},
                                                   {Tangle::kGradians, 400},    {Tangle::kTurns, 1}};
  for (const auto& [unit, turn] : units)
  {
    EXPECT_DOUBLE_EQ(Tangle(turn / 8, unit).degrees(), 45) << unit;
  }
  for (int degrees = -900; degrees <= 900; degrees += 30)
  {
    EXPECT_EQ(Tangle(degrees, Tangle::kDegrees).degrees(), degrees);
    EXPECT_NEAR(Tangle(degrees, Tangle::kDegrees).normal().degrees(), std::remainder(degrees, 360), 1e-12);
  }
  EXPECT_EQ(Tangle(3) / 1e-10, Tangle(3));
}

TEST(Quaternion, turnsAsMatricesDo)
{
  Random random;
  for (int i = 0; i < 3000; ++i)
  {
    const Tquaternion a = rotationOf(random), b = rotationOf(random);
    const T4dDblVector v = vectorOf(random), w = vectorOf(random);
    const T4dDblMatrix m = a.asMatrix();
    ASSERT_TRUE(v.rotateBy(a).equivalent(v * m, 1e-14));
    ASSERT_TRUE((a * b).asMatrix().equivalent(m * b.asMatrix(), 1e-14));
    ASSERT_TRUE((a * a.inverse()).equivalent(Tquaternion(), 1e-14));
    ASSERT_TRUE((-a).asMatrix().equivalent(m, 1e-14));
    ASSERT_TRUE(Tquaternion(m).asMatrix().equivalent(m, 1e-14));
    ASSERT_TRUE(Tquaternion(a.axis(), a.angle()).equivalent(a, 1e-14));
    ASSERT_NEAR(v.rotateBy(v.rotateTo(w)).angle(w).radians(), 0, 1e-7); // the cosine of small angles is no better
    ASSERT_TRUE(v.rotateBy(v.rotateTo(w)).parallel(w, 1e-14));

    // At each step of the way the rest of it is proportional.
    const double t = random.number(), rest = (a.inverse() * b).angle().radians();
    const Tquaternion between = Tquaternion::slerp(a, b, t);
    const double done = Tangle((a.inverse() * between).angle().radians()).normal().radians();
    ASSERT_NEAR(std::fabs(done), std::fabs(Tangle(rest).normal().radians() * t), 1e-13);
    ASSERT_TRUE(Tquaternion::slerp(a, -b, 1).equivalent(a.dot(b) > 0 ? b : -b, 1e-14));
    ASSERT_NEAR(between.norm(), 1, 1e-14);
  }
  for (const Taxis axis : {kX, kY, kZ})
  {
    const T4dDblMatrix m = turnedByAxis(axis, Tangle(0.7));
    T4dDblVector about;
    about[axis] = 3;
    EXPECT_TRUE(Tquaternion(about, Tangle(0.7)).asMatrix().equivalent(m, 1e-15));
    // Half a turn, of which the matrix shows no sine.
    const Tquaternion half(Tquaternion(about, Tangle(kPi)).asMatrix());
    EXPECT_TRUE(half.axis().parallel(about, 1e-15)) << half;
  }
}

TEST(Quaternion, turnsBetweenDirectionsThatAreNearlyTheSameOrOpposite)
{
  Random random;
  for (int i = 0; i < 500; ++i)
  {
    const T4dDblVector from = vectorOf(random), beside = from.cross(vectorOf(random));
    for (const double distance : {0., 1e-17, 1e-14, 1e-11, 1e-9, 1e-5, 0.1})
    {
      for (const double side : {1., -1.})
      {
        const T4dDblVector to = from * (3 * side) + beside * distance;
        const T4dDblVector turned = from.rotateBy(from.rotateTo(to));
        ASSERT_TRUE(turned.equivalent(to * (from.length() / to.length()), 3e-15)) << from << to;
      }
    }
  }
  EXPECT_EQ(T4dDblVector().rotateTo({1, 2, 3}), Tquaternion());
  EXPECT_EQ(Tquaternion(T4dDblVector(), Tangle(1)), Tquaternion());
  EXPECT_EQ(Tquaternion().axis(), T4dDblVector());
  EXPECT_EQ(Tquaternion(0, 0, 0, 0).asMatrix(), T4dDblMatrix());
  EXPECT_EQ(Tquaternion(0, 0, 0, 0).inverse().normal(), Tquaternion(0, 0, 0, 0));
  const Tquaternion a(T4dDblVector(1, 2, 3), Tangle(1)), b(T4dDblVector(1, 2, 3), Tangle(1 + 1e-9));
  EXPECT_NEAR((a.inverse() * Tquaternion::slerp(a, b, 0.5)).angle().radians(), 0.5e-9, 1e-15);
}

TEST(RotateXYZ, isThreeTurnsInItsOrder)
{
  const char* const names[] = {"XYZ", "YZX", "ZXY", "XZY", "YXZ", "ZYX"};
  Random random;
  for (int number = 0; number < TrotateXYZ::kOrders; ++number)
  {
    const auto order = TrotateXYZ::Order(number);
    std::ostringstream text;
    text << TrotateXYZ({}, Tangle(90, Tangle::kDegrees), {}, order);
    EXPECT_EQ(text.str(), std::string("<0, 90, 0> ") + names[number]);
    for (int i = 0; i < 2000; ++i)
    {
      TrotateXYZ r(Tangle(random.number() * kPi), Tangle(random.number() * kPi), Tangle(random.number() * kPi), order);
      // Into and around the poles, by distances down to the last digit.
      if (i % 2 == 0)
        r.set(r.axis(1), Tangle((i % 4 - 1) * (kPi / 2 - std::pow(0.1, i % 18))));
      if (i % 7 == 0)
        r.set(r.axis(1), Tangle(kPi / 2));
      T4dDblMatrix expected;
      for (int step = 0; step < 3; ++step)
        expected *= turnedByAxis(Taxis(names[number][step] - 'X'), r[unsigned(names[number][step] - 'X')]);
      const T4dDblMatrix m = r.asMatrix();
      ASSERT_TRUE(m.equivalent(expected, 1e-15));
      ASSERT_TRUE(r.asQuaternion().asMatrix().equivalent(m, 2e-15));
      for (int other = 0; other < TrotateXYZ::kOrders; ++other)
        ASSERT_TRUE(r.inOrder(TrotateXYZ::Order(other)).asMatrix().equivalent(m, 4e-15)) << r;
      ASSERT_TRUE(TrotateXYZ(r.asQuaternion(), order).asMatrix().equivalent(m, 4e-15));
      const T4dDblVector v = vectorOf(random);
      ASSERT_EQ(v.rotateBy(r), v * m);
      if (std::fabs(r[r.axis(1)].radians()) < 1.5)
      {
        for (const Taxis axis : {kX, kY, kZ})
          ASSERT_NEAR(TrotateXYZ(m, order)[axis].radians(), r[axis].radians(), 1e-13);
      }
    }
  }
}

// A matrix of some rank, with columns of quite different lengths, mirrored or not.
T4dDblMatrix trialMatrix(Random& random, int number)
{
  T4dDblMatrix m = random.matrix<double>(true);
  const int kind = number % 10, power = number / 10 % 10;
  const unsigned int row = unsigned(power) % 3;
  for (unsigned int j = 0; j < 3; ++j)
  {
    const double next = m[(row + 1) % 3][j], last = m[(row + 2) % 3][j];
    if (kind == 0)
      m[row][j] = 0;
    else if (kind == 1)
      m[row][j] = next * 3;
    else if (kind == 2) // nearly of a lower rank
      m[row][j] = next + last + m[row][j] * std::pow(0.1, power * 2);
    for (unsigned int i = 0; i < 3 && kind > 7; ++i)
      m[i][j] *= std::pow(10, (power - 5) * int(j));
  }
  return m;
}

TEST(XformMatrix, composesWhatItDecomposed)
{
  Random random;
  int mirrored = 0;
  for (int i = 0; i < 6000; ++i)
  {
    const T4dDblMatrix m = trialMatrix(random, i);
    TxformMatrix x(T4dDblMatrix(), TrotateXYZ::Order(i % TrotateXYZ::kOrders));
    x.scalePivot() = random.value<T3dDblPoint, 3>();
    x.rotatePivot() = random.value<T3dDblPoint, 3>();
    const TxformMatrix before = x;
    ASSERT_TRUE(x.decompose(m));
    double most = 1;
    for (unsigned int j = 0; j < 16; ++j)
      most = std::max(most, std::fabs(m[j / 4][j % 4]));
    ASSERT_TRUE(x.compose().equivalent(m, 1e-12 * most)) << i << m << x.compose();
    ASSERT_EQ(x.scalePivot(), before.scalePivot());
    ASSERT_EQ(x.rotatePivot(), before.rotatePivot());
    ASSERT_EQ(x.rotate().order(), before.rotate().order());
    ASSERT_NEAR(std::fabs(x.rotate().asMatrix().det3x3()), 1, 1e-14);
    mirrored += x.scale().x() < 0;
  }
  EXPECT_GT(mirrored, 1000);
  for (int i = 0; i < 200; ++i) // squares are no numbers any more
  {
    const double scale = i % 2 == 0 ? 1e200 : 1e-200;
    T4dDblMatrix m = trialMatrix(random, i % 8) * scale;
    m[3][3] = 1;
    const T4dDblMatrix composed = TxformMatrix(m).compose();
    ASSERT_TRUE(composed.equivalent(m, 1e-12 * scale)) << m << composed;
  }
  T4dDblMatrix projective;
  projective[0][3] = 1;
  TxformMatrix x(T4dDblMatrix(T4dDblVector(1, 2, 3)));
  EXPECT_FALSE(x.decompose(projective));
  EXPECT_EQ(x.translate(), T4dDblVector(1, 2, 3));
}

TEST(XformMatrix, doesItsPartsInTurn)
{
  TxformMatrix x;
  x.scale() = Tscale(2, 3, 4);
  x.shear().set(10, 100, 1000);
  x.rotate().set(kZ, Tangle(90, Tangle::kDegrees));
  x.translate().set(0.5, 0, 0);
  x.scalePivot().set(1, 1, 1);
  x.rotatePivot().set(0, 1, 0);
  // (1, 1, 0) to (1, 1, -3) from the pivot, sheared by z to (-399, -3999, -3), turned about (0, 1, 0) and moved.
  const T3dDblPoint p = T3dDblPoint(1, 1, 0) * x.compose();
  EXPECT_TRUE(p.equivalent({4000.5, -398, -3}, 1e-11)) << p;
}

} // namespace
