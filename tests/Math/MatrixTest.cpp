#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Math/T4dDblMatrixStack.h"
#include "Foundation/Platform/Types.h"
#include "tests/Math/Reference.h"

#include <cstring>
#include <sstream>

namespace {

template <class Real>
class Matrices : public testing::Test
{
};
TYPED_TEST_SUITE(Matrices, Precisions);

template <class Real>
constexpr TmatrixOf<Real> diagonal(Real x, Real y, Real z, Real w)
{
  return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, w};
}

TYPED_TEST(Matrices, computeWhatLongDoubleDoes)
{
  using Real = TypeParam;
  using Matrix = TmatrixOf<Real>;
  const double bound = kBound<Real>;
  Random random;
  for (int i = 0; i < 2000; ++i)
  {
    const Matrix a = random.matrix<Real>(), b = random.matrix<Real>(), c = random.matrix<Real>();
    const Reference ra(a), rb(b);
    const Matrix product = a * b;
    ASSERT_LT((ra * rb).distance(product), bound);
    ASSERT_TRUE((product * c).equivalent(a * (b * c), Real(bound)));
    Matrix alias = a;
    alias.premultBy(b).transposeIt();
    ASSERT_EQ(alias, (b * a).transpose());
    ASSERT_EQ(Matrix(a) *= a, Matrix(a, a));
    ASSERT_EQ((Matrix(a) += b) -= b * Real(1), (Matrix(a) += b) += b * Real(-1));

    const long double determinant = ra.determinant();
    ASSERT_NEAR(double(a.det4x4()), double(determinant), bound);
    ASSERT_NEAR(double(a.det3x3()), double(ra.determinant(8, 8, 3)), bound);
    ASSERT_LT(ra.adjugate().distance(a.adjoint()), bound);
    if (std::fabs(determinant) > 0.05)
    {
      ASSERT_LT(ra.adjugate().distance(a.inverse(), 1 / determinant), 100 * bound);
      ASSERT_LT(ra.adjugate().distance(a.fastInverse(), 1 / determinant), 100 * bound);
      ASSERT_EQ(a.fastInverse() == a.inverse(), determinant < 0); // the other way has other roundings
    }

    // Rows, columns and components of each class against the matrix of their products.
    const auto v = random.value<TvectorOf<Real>, 3>();
    const auto p = random.value<Tpoint3Of<Real>, 3>();
    const auto q = random.value<Tpoint4Of<Real>, 4>();
    Matrix rows(v.x(), v.y(), v.z(), 0, p.x(), p.y(), p.z(), 1, q.x(), q.y(), q.z(), q.w(), 0, 0, 0, 0);
    const Matrix row = rows * a, column = a * rows.transpose();
    const auto check = [&](const auto& value, unsigned int at) {
      auto asRow = value, asColumn = value;
      asRow *= a;
      asColumn.premultBy(a);
      for (unsigned int j = 0; j < sizeof value / sizeof(Real); ++j)
      {
        ASSERT_EQ(asRow[j], row[at][j]);
        ASSERT_EQ(asColumn[j], column[j][at]);
      }
    };
    check(v, 0);
    check(p, 1);
    check(q, 2);
    ASSERT_NEAR(v.dot(v.cross(v * a)), 0, bound);

    // Homogenised: row 0 keeps its direction, and the rest is as a rotation is.
    const Matrix rotation = a.homogenize();
    TvectorOf<Real> rows3[3];
    for (unsigned int j = 0; j < 3; ++j)
      rows3[j].set(rotation[j][0], rotation[j][1], rotation[j][2]);
    ASSERT_EQ(rows3[0], TvectorOf<Real>(a[0][0], a[0][1], a[0][2]).normal());
    ASSERT_TRUE((rows3[0] ^ rows3[1]).equivalent(rows3[2], Real(bound)));
    ASSERT_NEAR(rows3[0].dot(rows3[1]), 0, bound);
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are meant
    ASSERT_EQ(std::memcmp(rotation[3], a[3], sizeof(Real[4])), 0);
    ASSERT_EQ(rotation[1][3], a[1][3]);
  }
}

TYPED_TEST(Matrices, invertWhatIsDegenerate)
{
  using Real = TypeParam;
  using Matrix = TmatrixOf<Real>;
  const Real edge = Real(sizeof(Real) == 8 ? 1e-15 : 1e-5), behind = std::nextafter(edge, Real(1));
  const Real big = std::ldexp(Real(1), sizeof(Real) == 8 ? 600 : 70); // its square is too large
  const Matrix zero = Matrix() * 0, swap(0, 2, 0, 0, 5, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  const std::pair<Matrix, Matrix> cases[] = {
    {diagonal<Real>(2, 4, 8, 1), diagonal<Real>(0.5, 0.25, 0.125, 1)},
    {diagonal<Real>(-1, 1, 1, 1), diagonal<Real>(-1, 1, 1, 1)},
    {TvectorOf<Real>(1, 2, 3), TvectorOf<Real>(-1, -2, -3)},
    {zero, Matrix()},
    {swap, {0, Real(0.2), 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
    {diagonal<Real>(1, edge, -edge, 1), Matrix()}, // skipped
    {diagonal<Real>(1, behind, 1, -behind), diagonal<Real>(1, 1 / behind, 1, -1 / behind)},
    {{-big, 0, 0, 0, 0, big, 0, 0, 0, 0, big, 0, big, big, big, 1},
     {-1 / big, 0, 0, 0, 0, 1 / big, 0, 0, 0, 0, 1 / big, 0, 1, -1, -1, 1}},
    // The last of three equal rows has nothing left to divide by.
    {{1, 0, 0, 0, 0, 2, 4, 0, 0, 2, 4, 0, 0, 0, 0, 1}, {1, 0, 0, 0, 0, 2.5, -2, 0, 0, -1, 1, 0, 0, 0, 0, 1}},
  };
  for (const auto& [from, inverse] : cases)
  {
    EXPECT_EQ(from.inverse(), inverse) << from;
    EXPECT_EQ(from.fastInverse(), inverse) << from;
  }
  // The value of 1e-5F is 9.99999975e-6.
  Random random;
  for (const double determinant : {1e-7, 9.9999997e-6, 9.9999998e-6, 1.1e-5})
  {
    Matrix m = random.matrix<Real>();
    const Real factor = Real(determinant) / m.det4x4();
    for (unsigned int i = 0; i < 4; ++i)
      m[0][i] *= factor;
    const bool eliminates = sizeof(Real) == 8 && determinant < double(1e-5F);
    EXPECT_EQ(m.fastInverse(), eliminates ? m.inverse() : m.adjoint() * (1 / m.det4x4())) << determinant;
    EXPECT_NE(m.inverse(), m.adjoint() * (1 / m.det4x4()));
  }

  const Matrix scale = diagonal<Real>(2, 1, 1, 1) * Matrix(TvectorOf<Real>(7, 8, 9));
  EXPECT_EQ((TvectorOf<Real>(1, 1, 1) * scale.convertForNormals()), TvectorOf<Real>(0.5, 1, 1));
  EXPECT_EQ(scale.convertForNormals()[3][0], 0);
  EXPECT_EQ(Matrix(2, 0, 0, 1, 1, 3, 0, 2, 0, 0, 5, 3, 4, 5, 6, 7).homogenize(),
            Matrix(1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 4, 5, 6, 7));
  EXPECT_TRUE(diagonal<Real>(3, -3, 3, 1).isOrthogonal());
  EXPECT_FALSE(diagonal<Real>(1, 2, 1, 1).isOrthogonal());
  EXPECT_FALSE(diagonal<Real>(1, 1, 2, 1).isOrthogonal());
  for (const auto& [i, j] : {std::pair(0, 1), {1, 2}, {2, 0}})
  {
    Matrix m = Matrix::identity * 2;
    m(short(i), short(j)) = 1;
    m(short(j), short(i)) = -1;
    EXPECT_FALSE(m.isOrthogonal()) << m;
  }
  EXPECT_TRUE(Matrix().equivalent(diagonal<Real>(1, 1, 1, 1.5), 0.5));
  EXPECT_FALSE(Matrix().equivalent(diagonal<Real>(1, 1, 1, 1.5), std::nextafter(Real(0.5), Real(0))));
  EXPECT_FALSE(Matrix().equivalent(diagonal<Real>(1, 1, 1, std::numeric_limits<Real>::quiet_NaN()), 2));
}

TEST(Matrix, hasMembersOfOnePrecision)
{
  constexpr T4dDblMatrix kTwice = diagonal<double>(2, 2, 2, 1);
  static_assert(T4dDblMatrix(kTwice).affinePostmultBy(kTwice) == kTwice * kTwice);
  Random random;
  for (int i = 0; i < 100; ++i)
  {
    const T4dDblMatrix a = random.matrix<double>(true), b = random.matrix<double>(true);
    T4dDblMatrix dirty = a;
    for (unsigned int row = 0; row < 4; ++row)
      dirty[row][3] = random.number();
    ASSERT_EQ(T4dDblMatrix(b).affinePremultBy(dirty), a * b);
    ASSERT_EQ(dirty.affinePostmultBy(b), a * b);
  }
  T4dDblMatrix m;
  m[0][3] = 1e-10;
  EXPECT_TRUE(m.isAffine());
  m[3][3] = 1 + 1.1e-10;
  EXPECT_FALSE(m.isAffine());
  m = T4dDblVector(1, 2, 1 / 3.);
  EXPECT_EQ(T4dFltMatrix(m).T4dDblMatrixOf()[3][2], double(1 / 3.F));
  EXPECT_EQ(T4dFltMatrix(m).convertItForTangents(), T4dFltMatrix::identity);
}

TYPED_TEST(Matrices, standOnAStackAndArePrinted)
{
  using Matrix = TmatrixOf<TypeParam>;
  TmatrixStackOf<TypeParam> stack;
  Matrix m = Matrix::identity * 5;
  EXPECT_FALSE(stack.pop(m) || stack.getTop(m) || m != Matrix::identity * 5);
  for (int i = 1; i <= 9; ++i)
    EXPECT_EQ(stack.push(Matrix() * TypeParam(i)), 0);
  EXPECT_TRUE(stack.getTop(m) && m == Matrix() * TypeParam(9));
  for (int i = 9; i >= 1; --i)
    EXPECT_TRUE(stack.pop(m) && m == Matrix() * TypeParam(i));

  std::ostringstream text;
  TdebugOutput out(text);
  m[1][2] = TypeParam(0.1);
  m.debug(out);
  EXPECT_NE(text.str().find("]\n{\n   | 1 0 0 0 |\n   | 0 1 0.1 0 |\n"), std::string::npos) << text.str();
}

// Where the order of operations is given, all platforms compute the same bits.
TYPED_TEST(Matrices, computeTheSameBitsEverywhere)
{
  using Real = TypeParam;
  Random random;
  TuInt64 hash = 0;
  const auto add = [&hash](const auto& value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    for (const unsigned char byte : bytes)
      hash = (hash ^ byte) * 0x100000001B3;
  };
  for (int i = 0; i < 500; ++i)
  {
    const TmatrixOf<Real> a = random.matrix<Real>(), b = random.matrix<Real>(true);
    const auto v = random.value<TvectorOf<Real>, 3>();
    const auto q = random.value<Tpoint4Of<Real>, 4>();
    for (const TmatrixOf<Real>& each : {a * b, a.inverse(), b.fastInverse(), a.homogenize(), b.convertForNormals()})
      add(each);
    add(q * a - Tpoint4Of<Real>(v, 1) * b);
    add((v * a).cross(v) / Real(q.distanceTo(Tpoint4Of<Real>())));
  }
  EXPECT_EQ(hash, sizeof(Real) == 8 ? 0xd47bc932935e21a8 : 0x78bc0e67568d9a0d) << std::hex << hash;
}

} // namespace
