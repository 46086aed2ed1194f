// Random geometry, and the same computed in long double.
#pragma once

#include "Foundation/Math/T4dDblMatrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

using Precisions = testing::Types<double, float>;

// Half of the digits that are sure, and some more: the bound for results of a few dozen operations on numbers near 1.
template <class Real>
constexpr double kBound = 200 * double(std::numeric_limits<Real>::epsilon());

struct Reference
{
  std::array<std::array<long double, 4>, 4> m{};

  Reference() = default;
  template <class Real>
  explicit Reference(const TmatrixOf<Real>& from)
  {
    for (unsigned int i = 0; i < 16; ++i)
      m[i / 4][i % 4] = from[i / 4][i % 4];
  }
  Reference operator*(const Reference& other) const
  {
    Reference product;
    for (int i = 0; i < 64; ++i)
      product.m[i / 16][i % 4] += m[i / 16][i / 4 % 4] * other.m[i / 4 % 4][i % 4];
    return product;
  }

  // The determinant without a row and a column, or of everything without them.
  long double determinant(unsigned int rows = 0, unsigned int columns = 0, int size = 4) const
  {
    if (size == 0)
      return 1;
    int row = 0;
    while (rows >> row & 1)
      ++row;
    long double sum = 0, sign = 1;
    for (int column = 0; column < 4; ++column)
    {
      if (columns >> column & 1)
        continue;
      sum += sign * m[row][column] * determinant(rows | 1U << row, columns | 1U << column, size - 1);
      sign = -sign;
    }
    return sum;
  }
  Reference adjugate() const
  {
    Reference result;
    for (unsigned int i = 0; i < 4; ++i)
    {
      for (unsigned int j = 0; j < 4; ++j)
        result.m[j][i] = determinant(1U << i, 1U << j, 3) * ((i + j) % 2 == 0 ? 1 : -1);
    }
    return result;
  }
  template <class Real>
  double distance(const TmatrixOf<Real>& other, long double factor = 1) const
  {
    long double most = 0;
    for (unsigned int i = 0; i < 16; ++i)
      most = std::max(most, std::fabs(m[i / 4][i % 4] * factor - other[i / 4][i % 4]));
    return double(most);
  }
};

class Random
{
public:
  // The same numbers on every platform, between -1 and 1 and exact in both precisions.
  double number() { return double(int(fEngine() >> 8) - (1 << 23)) / (1 << 23); }

  template <class Real>
  TmatrixOf<Real> matrix(bool isAffine = false)
  {
    TmatrixOf<Real> m;
    for (unsigned int i = 0; i < 16; ++i)
    {
      const Real any = Real(number());
      m[i / 4][i % 4] = isAffine && i % 4 == 3 ? Real(i == 15) : any;
    }
    return m;
  }
  template <class Value, int kCount>
  Value value()
  {
    Value v;
    for (unsigned int i = 0; i < kCount; ++i)
      v[i] = decltype(v[i] + v[i])(number());
    return v;
  }

private:
  std::mt19937 fEngine{4};
};
