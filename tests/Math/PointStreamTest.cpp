#include "Foundation/Math/PointArrays.h"
#include "Foundation/Math/TpointStream.h"
#include "tests/Math/Reference.h"

#include <cstring>
#include <vector>

namespace {

// Runs a test with every set of instructions that the processor has.
template <class Test>
void withEachSet(Test test)
{
  for (const auto set : {TpointStream::kSse2, TpointStream::kAvx2, TpointStream::kAvx512})
  {
    TpointStream::limit(set);
    if (TpointStream::instructions() == set)
      test();
  }
  TpointStream::limit(TpointStream::kAvx512);
}

template <class Value>
std::vector<Value> valuesOf(Random& random, std::size_t count)
{
  const double special[] = {0, -0.0, 1e-12, 1, HUGE_VAL, -HUGE_VAL, std::nan(""), 1e30};
  std::vector<Value> values(count);
  for (Value& value : values)
  {
    for (unsigned int i = 0; i < sizeof value / sizeof value[0]; ++i)
    {
      const double number = random.number();
      value[i] = decltype(value[0] + value[0])(number > 0.8 ? special[int(number * 1000) % 8] : number);
    }
  }
  return values;
}

// bulk(from, to, count) against single(value), whole and in place, with a value behind the end that must stay. Bits
// are compared, but for NaN, whose sign no operation promises.
template <class Value, class Bulk, class Single>
void expectSame(Random& random, Bulk bulk, Single single)
{
  for (std::size_t count = 0; count < 200; ++count)
  {
    const std::vector<Value> from = valuesOf<Value>(random, count + 1);
    std::vector<Value> to(count + 1, from.back()), inPlace = from;
    bulk(from.data(), to.data(), count);
    bulk(inPlace.data(), inPlace.data(), count);
    for (std::size_t i = 0; i <= count; ++i)
    {
      const Value expected = i == count ? from.back() : single(from[i]);
      for (unsigned int j = 0; j < sizeof expected / sizeof expected[0]; ++j)
      {
        for (const auto result : {to[i][j], inPlace[i][j]})
        {
          const auto wanted = expected[j];
          // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are meant
          ASSERT_TRUE(std::memcmp(&result, &wanted, sizeof wanted) == 0 || (std::isnan(result) && std::isnan(wanted)))
            << from[i] << " becomes " << to[i] << ", not " << expected << ", at " << i << " of " << count;
        }
      }
    }
  }
}

template <class Real>
class PointStream : public testing::Test
{
};
TYPED_TEST_SUITE(PointStream, Precisions);

TYPED_TEST(PointStream, doesWhatTheClassesDo)
{
  using Real = TypeParam;
  withEachSet([] {
    Random random;
    const TmatrixOf<Real> m = random.matrix<Real>();
    const auto transform = [&m](const auto* from, auto* to, std::size_t count) {
      TpointStream::transform(from, to, count, m);
    };
    const auto product = [&m](const auto& value) { return value * m; };
    expectSame<Tpoint3Of<Real>>(random, transform, product);
    expectSame<Tpoint4Of<Real>>(random, transform, product);
    expectSame<TvectorOf<Real>>(random, transform, product);
    expectSame<TvectorOf<Real>>(
      random, [](const auto* from, auto* to, std::size_t count) { TpointStream::normalize(from, to, count); },
      [](const auto& v) { return v.normal(); });
  });
}

template <class Point>
void expectBounds(Random& random)
{
  using Real = std::remove_reference_t<decltype(Point()[0])>;
  for (std::size_t count = 0; count < 200; ++count)
  {
    const std::vector<Point> points = valuesOf<Point>(random, count);
    Point low(1, 2, 3), high(4, 5, 6), least(INFINITY, INFINITY, INFINITY), greatest(-INFINITY, -INFINITY, -INFINITY);
    bool any = true;
    for (unsigned int j = 0; j < 3; ++j)
    {
      for (const Point& p : points)
      {
        const Real place = (p - Point::origin)[j]; // divided by the weight
        least[j] = std::fmin(least[j], place);
        greatest[j] = std::fmax(greatest[j], place);
      }
      any = any && least[j] <= greatest[j];
    }
    ASSERT_EQ(TpointStream::bounds(points.data(), count, low, high), any);
    ASSERT_EQ(low, any ? least : Point(1, 2, 3)) << count;
    ASSERT_EQ(high, any ? greatest : Point(4, 5, 6)) << count;
  }
}

TYPED_TEST(PointStream, findsBounds)
{
  using Real = TypeParam;
  using Point = Tpoint3Of<Real>;
  withEachSet([] {
    Random random;
    expectBounds<Point>(random);
    expectBounds<Tpoint4Of<Real>>(random);
    const Point zero(Real(-0.0), 0, Real(-0.0));
    Point low, high;
    EXPECT_TRUE(TpointStream::bounds(&zero, 1, low, high));
    for (unsigned int j = 0; j < 3; ++j)
      EXPECT_FALSE(std::signbit(low[j]) || std::signbit(high[j]));
  });
}

TEST(PointArrays, haveNoHolesInTheirElements)
{
  TxformMatrixArray xforms;
  alignas(TxformMatrix) unsigned char bytes[sizeof(TxformMatrix)];
  for (const int fill : {0, 255})
  {
    std::memset(bytes, fill, sizeof bytes);
    xforms.addLast(*new (bytes) TxformMatrix());
  }
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): no byte is left as it was
  EXPECT_EQ(std::memcmp(xforms.data(), xforms.data() + 1, sizeof(TxformMatrix)), 0);
  const T4dDblPoint quad[4] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {0, 1, 2, 3}};
  TquadPointsArray quads;
  EXPECT_EQ(quads.addLast(quad), 0);
  EXPECT_EQ(quads.last()[3], quad[3]);
}

} // namespace
