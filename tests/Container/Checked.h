/// \file
/// What the tests of arrays share: elements of several kinds, and a check of an array against a vector.

#pragma once

#include "Foundation/Debug/Texception.h"
#include "Foundation/String/Tstring.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

using Bytes3 = std::array<unsigned char, 3>;
using Words12 = std::array<int, 3>;
using Quad32 = std::array<double, 4>;

/// Counts those that live, and knows where it lives: moving its bytes is noticed. Copying can be made to fail.
class Counted
{
public:
  Counted(int value = 0) { make(value); }
  Counted(Counted&& other) noexcept { make(other.value()); }
  Counted(const Counted& other)
  {
    if (gCopiesLeft >= 0 && gCopiesLeft-- == 0)
    {
      gCopiesLeft = -2;
      throw TmemoryException();
    }
    make(other.value());
  }
  Counted& operator=(const Counted& other) // NOLINT(bugprone-unhandled-self-assignment): it may
  {
    fValue = other.value();
    return *this;
  }
  ~Counted()
  {
    EXPECT_EQ(std::exchange(fSelf, nullptr), this);
    --gAlive;
  }
  int value() const { return fSelf == this ? fValue : throw std::logic_error("moved as bytes"); }
  bool operator==(const Counted& other) const { return value() == other.value(); }
  bool operator<(const Counted& other) const { return value() < other.value(); }

  static inline int gAlive = 0;
  static inline int gCopiesLeft = -1; // until one throws; -1: none does, -2: one did

private:
  void make(int value) { fValue = value, ++gAlive; }

  int fValue;
  Counted* fSelf = this;
};

template <class X>
X made(int i)
{
  if constexpr (std::is_same_v<X, Tstring>)
    return Tstring(std::to_string(i % 50).c_str());
  else if constexpr (std::is_arithmetic_v<X> || std::is_same_v<X, Counted>)
    return X(i % 50);
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
