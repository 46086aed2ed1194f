/// \file
/// What the benchmarks of matrices and points share: random numbers, and a check of every result against long double.

#pragma once

#include "Foundation/Math/T4dDblMatrix.h"
#include "benchmarks/Ratios.h"

#include <Eigen/Geometry>
#include <Imath/ImathMatrix.h>
#include <glm/glm.hpp>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>

// From here on the compiler takes it that others read and write the memory.
inline void makeKnown(const void* memory)
{
  asm volatile("" : : "r"(memory) : "memory");
}

template <class Real>
class Numbers
{
public:
  // Between -1 and 1.
  Real operator()() { return Real(fSpread(fEngine)); }

private:
  std::mt19937 fEngine{5};
  std::uniform_real_distribution<double> fSpread{-1, 1};
};

// Ends the run if a result is not what it should be, within some roundings of numbers of the size of \p scale.
template <class Real>
void check(const std::string& what, const Real* result, const long double* expected, int count, long double scale = 1)
{
  for (int i = 0; i < count; ++i)
  {
    if (!(std::fabs(result[i] - expected[i]) <= 1000 * std::numeric_limits<Real>::epsilon() * scale))
    {
      std::fprintf(stderr, "%s: component %d is %.17g, not %.17Lg\n", what.c_str(), i, double(result[i]), expected[i]);
      std::exit(1);
    }
  }
}
