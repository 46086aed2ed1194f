#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Time/TosTime.h"
#include "Foundation/Time/Ttime.h"
#include "Foundation/Time/TtimeRange.h"
#include "Foundation/Time/TtimeValue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cmath>
#include <cstring>
#include <ctime>
#include <random>
#include <tuple>

namespace {

using testing::PrintToString;

constexpr int kTicks[] = {21600000, 360000, 6000, 6, 6000 / 15, 6000 / 24, 6000 / 25, 6000 / 30, 125, 120, 100};

class AnimTime : public testing::Test
{
protected:
  ~AnimTime() override { setUnit(kTime24Fps); }
  static void setUnit(int unit) { TanimTime::setGlobalCurrentTimeUnit(TtimeUnitSystem(unit)); }
  static Tint32 ticks(double value, int unit) { return TanimTime(value, TtimeUnitSystem(unit)).ticks(); }
  static double value(Tint32 ticks, int unit) { return TanimTime(ticks).valueInThisUnit(TtimeUnitSystem(unit)); }
};

TEST_F(AnimTime, becomesTheNearestTickAndTheEvenOneOfTwo)
{
  std::mt19937 random(6);
  for (int unit = -1; unit <= 13; ++unit)
  {
    const bool counts = unit >= kTimeHours && unit < kTimeNone;
    const Tint64 perUnit = counts ? kTicks[unit] : 1;
    setUnit(unit);
    for (int i = 0; i < 20000; ++i)
    {
      const Tint32 t = i < 4 ? INT_MAX - i : i < 8 ? INT_MIN + i - 4 : Tint32(random());
      ASSERT_EQ(ticks(value(t, kTimeCurrent), kTimeCurrent), t) << "unit " << unit;
      ASSERT_EQ(ticks(value(t, unit), unit), unit == kTimeNone ? 0 : t) << "unit " << unit;
      // m / 2^k units, whose product is a double. About one in eight is a half.
      const Tint64 m = t >> 3;
      const int k = int(random() % 31);
      const Tint64 floor = m * perUnit >> k, twiceRest = (m * perUnit - (floor << k)) * 2;
      const Tint64 nearest = floor + (twiceRest > 1LL << k || (twiceRest == 1LL << k && (floor & 1)));
      const Tint32 expected = nearest >= INT_MIN && nearest <= INT_MAX ? Tint32(nearest) : INT_MIN;
      ASSERT_EQ(ticks(std::ldexp(double(m), -k), counts ? unit : kTimeCurrent), expected)
        << m << '/' << k << ' ' << unit;
    }
  }
}

TEST_F(AnimTime, hasTheBitsOfDoubleOnEveryPlatform)
{
  // Wider registers or another order of operations would change them.
  EXPECT_EQ(value(1908846932, kTimeHours), 0x1.617d7bf37694bp+6);
  EXPECT_EQ(value(1832931806, kTimeMinutes), 0x1.3e37a2c53ec29p+12);
  EXPECT_EQ(value(1835568741, kTime24Fps), 0x1.c0230bdb22d0fp+22);
  EXPECT_EQ(value(1835568741, kTimeCurrent), 0x1.c0230bdb22d0ep+22);
  EXPECT_EQ(ticks(0.9166666666666666, kTimeMilliseconds), 6);
  EXPECT_EQ(ticks(0.00375, kTime15Fps), 2);
  EXPECT_EQ(ticks(0.01, kTimeCurrent), 2);
  EXPECT_EQ((TanimTime(10) * 0.3).ticks(), 3);
  EXPECT_EQ((TanimTime(3) / 0.1).ticks(), 30);
  EXPECT_EQ(TanimTime(1319874024).inSeconds(), 219979.0F);
  EXPECT_EQ(TanimTime::convertFromUnitToUnit(1, kTime24Fps, kTime30Fps), 1.25);
}

TEST_F(AnimTime, isTheLeastWhereNoTickFits)
{
  setUnit(kTimeNone);
  const std::tuple<double, Tint32, Tint32> cases[] = {{2147483647.25, INT_MAX, INT_MAX},
                                                      {2147483647.5, INT_MIN, INT_MAX},
                                                      {2147483648.0, INT_MIN, INT_MIN},
                                                      {-2147483647.5, INT_MIN, -INT_MAX},
                                                      {-INFINITY, INT_MIN, INT_MIN},
                                                      {NAN, INT_MIN, INT_MIN},
                                                      {-0.75, -1, 0}};
  for (const auto& [value, rounded, truncated] : cases)
  {
    EXPECT_EQ(ticks(value, kTimeCurrent), rounded) << value;
    EXPECT_EQ(ticks(value, -1), truncated) << value;
    EXPECT_EQ(ticks(value, 13), truncated) << value;
    EXPECT_EQ(TanimTime(value), truncated) << value;
    EXPECT_EQ(TanimTime(1) * value, truncated) << value;
  }
  for (const double divisor : {1e-10, -1e-300, double(NAN)})
    EXPECT_EQ(TanimTime(1) / divisor, INT_MIN) << divisor;
}

TEST_F(AnimTime, calculatesWithTicksAndWraps)
{
  const Tint32 edges[] = {0, 1, -1, 2, -7, 6000, 46341, -46341, 0x10000, INT_MAX, -INT_MAX, INT_MIN};
  for (const Tint32 a : edges)
    for (const Tint32 b : edges)
    {
      const TuInt32 x = TuInt32(a), y = TuInt32(b);
      EXPECT_EQ(TanimTime(a) + b, x + y) << a << ' ' << b;
      EXPECT_EQ(a - TanimTime(b), x - y) << a << ' ' << b;
      EXPECT_EQ(TanimTime(a) * TanimTime(b), x * y) << a << ' ' << b;
      EXPECT_EQ(TanimTime(a) / TanimTime(b), b == 0 ? x : b == -1 ? 0 - x : TuInt32(a / b)) << a << ' ' << b;
      EXPECT_EQ(TanimTime(a) / (b * -0.0), a) << a << ' ' << b;
      EXPECT_EQ(TanimTime(a).clamp(b, 5), a < b ? b : a > 5 ? 5 : a) << a << ' ' << b;
    }
}

TEST_F(AnimTime, takesEveryNumberOnEveryPlatform)
{
  for (const TanimTime& time : {TanimTime(5L), TanimTime((7LL << 32) + 5), TanimTime(kTime24Fps), TanimTime(-5.9F) * -1,
                                TanimTime(1) * 5UL, TanimTime(10) / 2LL, 2.5F * TanimTime(2)})
    EXPECT_EQ(time, 5);
  static_assert(!std::is_convertible_v<double, TanimTime>, "0.5 of what?");
  static_assert(TanimTime(std::chrono::milliseconds(40) * 25) == TanimTime(6000));
}

TEST_F(AnimTime, isShown)
{
  const std::tuple<int, Tint32, const char*> cases[] = {
    {kTime24Fps, -249, "00:00:00:00"},         {kTime24Fps, -250, "-00:00:00:01"},
    {kTime60Fps, 21599999, "00:59:59:59"},     {kTime25Fps, INT_MIN, "-99:25:13:23"},
    {kTimeMilliseconds, 6054, "00:00:01:009"}, {kTimeHours, -21605999, "-01:00:00:00"},
    {kTimeCurrent, -5999, "-00:00:00:5999"},   {77, 6001, "00:00:01:0001"}};
  for (const auto& [unit, ticks, text] : cases)
  {
    setUnit(unit);
    EXPECT_STREQ(TanimTime(ticks).valueInSmpteUnit().asC(), text) << unit;
  }
  setUnit(kTime25Fps);
  Tint32Array fields{1}, expected{-99, -25, -13, -23};
  TanimTime(INT_MIN).getValueInSmpteUnit(fields);
  EXPECT_TRUE(std::equal(fields.begin(), fields.end(), expected.begin(), expected.end()));
  const TtimeUnit units[] = {kTimeHours, kTimeCurrent, TtimeUnitSystem(-1), TtimeUnitSystem(13)};
  EXPECT_EQ(PrintToString(units), "{ hours, current, ticks, ticks }");
}

TEST(TtimeRange, isASetOfMoments)
{
  for (int code = 0; code < 6 * 6 * 6 * 6; ++code)
  {
    const TtimeRange a(code % 6, code / 6 % 6), b(code / 36 % 6, code / 216);
    TtimeRange same, both, around = a; // moment by moment
    for (int t = 0; t < 6; ++t)
    {
      if (t >= a.start() && t <= a.end())
        same.extend(t);
      if (a.contains(t) && b.contains(t))
        both.extend(t);
      if (b.contains(t))
        around.extend(t);
    }
    const TanimTime time = b.start();
    const bool none = a.end() < a.start();
    ASSERT_TRUE(a == same && std::hash<TtimeRange>()(a) == std::hash<TtimeRange>()(same)) << code;
    ASSERT_TRUE(a.intersection(b) == both && a.overlaps(b) != both.isEmpty() && a.contains(b) == (both == b)) << code;
    ASSERT_EQ(a.unionWith(b), around) << code;
    ASSERT_EQ(a.clamp(time), none ? time : std::clamp(time, a.start(), a.end())) << code;
    ASSERT_EQ(a.duration(), none ? 0 : a.end() - a.start()) << code;
  }
  EXPECT_EQ(TtimeRange() + 1, TtimeRange());
  EXPECT_EQ(PrintToString(TtimeRange(-3000, 5990) + 10), "[-0.498333 s - 1 s]");
}

TEST(TtimeValue, hasNoByteThatSearchingMisses)
{
  alignas(TtimeValue) unsigned char dirty[sizeof(TtimeValue)];
  std::memset(dirty, 0xA5, sizeof dirty);
  const TtimeValueArray keys{{-1, 9}, {0, -1}, {0, 1}, {1, -9}};
  EXPECT_EQ(keys.find(*new (dirty) TtimeValue(0, 1)), 0);
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
  EXPECT_EQ(PrintToString(keys[0]), "9 at -0.000166667 s");
}

TEST(Tduration, hasParts)
{
  for (const Tint32 seconds : {0, 59, 3599, 86399, 86400, 1234567890, INT_MIN, -1})
  {
    const Tduration span(seconds);
    EXPECT_EQ(Tduration(span.days(), span.hours(), span.minutes(), span.seconds()), span) << seconds;
    EXPECT_TRUE(span.hours() < 24 && span.minutes() < 60 && span.seconds() < 60) << seconds;
  }
  EXPECT_EQ(Tduration(short(1), short(2), short(30), short(-1)), Tduration(95399));
  EXPECT_GT(Tduration(-1), 0x7FFFFFFF);
  EXPECT_EQ(Tduration(-1).inMinutes(), 71582788.25);
  EXPECT_EQ(PrintToString(Tduration(-1)), "49710d 06:28:15");
}

TEST(Clocks, runAndWrap)
{
  EXPECT_EQ(PrintToString(Ttime(951868799)), "2000-02-29T23:59:59Z");
  const Ttime last(0xFFFFFFFF);
  EXPECT_EQ(PrintToString(last), "2106-02-07T06:28:15Z");
  EXPECT_EQ(Ttime(std::chrono::system_clock::time_point(last)), last);
  EXPECT_EQ(last - Ttime(1), -2);
  EXPECT_EQ(TosTime(3) - 4 + 1000U, 999);
  EXPECT_LT(std::abs(double(Ttime::now().osTime()) - double(std::time(nullptr))), 3);
  const auto before = std::chrono::steady_clock::now();
  const TosTime start = TosTime::now();
  TosTime span;
  while (span < 60)
    span = TosTime::now() - start;
  const auto outer = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before).count();
  EXPECT_LT(span.ticks(), outer + 20); // Windows counts in steps of 16
}

} // namespace
