#include "Foundation/Data/TargList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <tuple>

namespace {

std::string written(const TargList& list, unsigned long flags = 0)
{
  Tstring text;
  list.appendAll(text, flags);
  return std::string(text);
}

// Any bits at all, products and quotients of short numbers and powers of ten, and the ends of the range.
TEST(TargList, NumbersReadBackBitForBit)
{
  using Limits = std::numeric_limits<double>;
  std::mt19937_64 random(11);
  TdoubleArgList numbers(TdoubleArray{0.0, -0.0, Limits::infinity(), -Limits::infinity(), Limits::max(),
                                      Limits::denorm_min(), Limits::min(), 2147483648.0});
  for (int i = 0; i < 30000; ++i)
  {
    const std::uint64_t bits = i % 9 ? random() : random() | std::uint64_t(0x7FF) << 52; // often no number
    const double shorter = double(random() >> random() % 60), power = std::pow(10.0, double(random() % 23));
    numbers.values().addLast(i % 3 == 1 ? shorter * power : shorter / power);
    if (i % 3 == 0)
      std::memcpy(&numbers.values().last(), &bits, sizeof bits);
  }
  TstringArgList texts;
  ASSERT_TRUE(texts.setText(Tstring(written(numbers).c_str())));
  ASSERT_EQ(texts.length(), numbers.length());
  for (unsigned i = 0; i < texts.length(); ++i)
  {
    double read = 0;
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are meant
    ASSERT_TRUE(texts.asDouble(i, read) && std::memcmp(&read, &numbers.values()[i], sizeof read) == 0)
      << texts.values()[i];
  }
  EXPECT_EQ(written(TdoubleArgList(TdoubleArray{0.1, 1e300, -0.0, 42, 1 / 0.0})), "0.1 1e+300 -0 42 inf");
}

// Which kinds there are, and what the results are, which were -7 and "none" before.
std::string answers(const TargList& list, unsigned i)
{
  double number = -7;
  Tint32 whole = -7;
  TanimTime time(-7);
  Tstring text("none");
  std::ostringstream out;
  out << list.asDouble(i, number) << list.asInt32(i, whole) << list.asTime(i, time) << list.asString(i, text) << ' '
      << number << ' ' << whole << ' ' << time.ticks() << ' ' << text;
  return out.str();
}

TEST(TargList, GivesWhatItCan)
{
  const TdoubleArgList numbers(TdoubleArray{1.5, -2147483648.0, std::nan(""), 1e300});
  const TtimeArgList times(TanimTimeArray{9000, -1, Tint32(-2147483647 - 1)});
  TstringArgList texts;
  ASSERT_TRUE(texts.setText("42 -6t +1 2147483648 1x nan nan:7ff0000000000000 nan:7ff8 1e999 \"\" t"));
  const std::tuple<const TargList&, unsigned, const char*> cases[] = {
    {numbers, 0, "1011 1.5 -7 9000 1.5"},
    {numbers, 1, "1101 -2.14748e+09 -2147483648 -7 -2147483648"},
    {numbers, 2, "1001 nan -7 -7 nan:7ff8000000000000"},
    {numbers, 3, "1001 1e+300 -7 -7 1e+300"},
    {numbers, 4, "0000 -7 -7 -7 none"},
    {times, 0, "1011 1.5 -7 9000 9000t"},
    {times, 2, "1011 -357914 -7 -2147483648 -2147483648t"},
    {times, 3, "0000 -7 -7 -7 none"},
    {texts, 0, "1111 42 42 252000 42"},
    {texts, 1, "0011 -7 -7 -6 -6t"},
    {texts, 2, "0001 -7 -7 -7 +1"},
    {texts, 3, "1001 2.14748e+09 -7 -7 2147483648"},
    {texts, 4, "0001 -7 -7 -7 1x"},
    {texts, 5, "0001 -7 -7 -7 nan"},
    {texts, 6, "0001 -7 -7 -7 nan:7ff0000000000000"}, // infinity
    {texts, 7, "0001 -7 -7 -7 nan:7ff8"},
    {texts, 8, "0001 -7 -7 -7 1e999"},
    {texts, 9, "0001 -7 -7 -7 "},
    {texts, 10, "0001 -7 -7 -7 t"},
    {texts, 11, "0000 -7 -7 -7 none"}};
  for (const auto& [list, index, expected] : cases)
  {
    EXPECT_EQ(answers(list, index), expected);
    EXPECT_EQ(list.type(index).isArg(), index < list.length());
  }
}

TEST(TargList, ReadsTheTextsThatItWrites)
{
  std::mt19937 random(3);
  for (int i = 0; i < 2000; ++i)
  {
    TstringArgList list, read;
    for (auto n = random() % 5; n != 0; --n)
    {
      std::string text(random() % 6, '\0');
      for (char& c : text)
        c = random() % 4 ? "a1\"\\ 'x"[random() % 7] : char(random());
      list.values().addLast(Tstring(std::string_view(text)));
    }
    const std::string text = written(list, i % 2 ? TargList::kQuoteAll : 0);
    ASSERT_TRUE(read.setText(Tstring(std::string_view(text)))) << text;
    ASSERT_EQ(read.length(), list.length()) << text;
    EXPECT_TRUE(std::equal(read.values().begin(), read.values().end(), list.values().begin())) << text;
  }
  TstringArgList list;
  EXPECT_TRUE(list.setText("\f \"a b\\\"\\x41\\n\"\tC:\\n\"x\""));
  EXPECT_EQ(written(list), "\"a b\\\"A\\n\" C:\\n\"x\"");
  EXPECT_EQ(written(list, TargList::kQuoteAll), "\"a b\\\"A\\n\" \"C:\\\\n\\\"x\\\"\"");
  for (const char* wrong : {"a \"b", "a \"b\\\"", "\"", "\"a\"b", "\"\\"})
    EXPECT_FALSE(list.setText(wrong)) << wrong;
  EXPECT_EQ(list.length(), 2u);
  EXPECT_TRUE(list.setText("") && list.length() == 0);
}

} // namespace
