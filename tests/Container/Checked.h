/// \file
/// What the tests of arrays share: elements of several kinds, and a check of an array against a vector.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/String/Tstring.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

using Bytes3 = std::array<unsigned char, 3>;
using Words12 = std::array<int, 3>;
using Quad32 = std::array<double, 4>;

/// Counts those that live, and knows where it lives: moving its bytes is noticed. Copying can be made to fail.
class Counted
{
public:
  Counted(int value = 0)
    : fValue(value)
  {
    ++gAlive;
  }
  Counted(const Counted& other)
    : fValue(other.value())
  {
    if (gCopiesLeft >= 0 && gCopiesLeft-- == 0)
      throw 1;
    ++gAlive;
  }
  Counted(Counted&& other) noexcept
    : fValue(other.value())
  {
    ++gAlive;
  }
  Counted& operator=(const Counted& other)
  {
    fValue = other.value();
    return *this;
  }
  ~Counted()
  {
    EXPECT_EQ(fSelf, this);
    fSelf = nullptr;
    --gAlive;
  }
  int value() const
  {
    EXPECT_EQ(fSelf, this);
    return fValue;
  }
  bool operator==(const Counted& other) const { return value() == other.value(); }
  bool operator<(const Counted& other) const { return value() < other.value(); }

  static inline int gAlive = 0;
  static inline int gCopiesLeft = -1; // until one throws; -1: none does

private:
  int fValue;
  Counted* fSelf = this;
};

template <class X>
X made(int i)
{
  if constexpr (std::is_same_v<X, Tstring>)
    return Tstring(std::to_string(i % 50).c_str());
  else if constexpr (std::is_arithmetic_v<X>)
    return X(i % 50);
  else if constexpr (std::is_same_v<X, Counted>)
    return Counted(i % 50);
  else
  {
    X x{};
    x.back() = typename X::value_type(i % 50); // what a search compares last
    return x;
  }
}

template <class Array, class X>
void expectEqual(const Array& array, const std::vector<X>& model)
{
  ASSERT_TRUE(array.validate());
  ASSERT_EQ(array.length(), model.size());
  ASSERT_TRUE(std::equal(array.begin(), array.end(), model.begin()));
}
