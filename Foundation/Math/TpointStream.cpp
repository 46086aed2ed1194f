#include "Foundation/Math/TpointStream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

// Each operation is a kernel: a struct whose run() is inlined into one function for every set of instructions, for
// which the compiler then makes code of its own.
#define INLINE [[gnu::always_inline]] static inline

namespace {

TpointStream::Instructions available() noexcept
{
#if defined(__i386__) || defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq"))
    return TpointStream::kAvx512;
  if (__builtin_cpu_supports("avx2"))
    return TpointStream::kAvx2;
#endif
  return TpointStream::kSse2;
}

TpointStream::Instructions gInstructions = available();

#if defined(__i386__) || defined(__x86_64__)
template <template <int> class Kernel, class... Arguments>
__attribute__((target("avx2"))) void runAvx2(Arguments... arguments) noexcept
{
  Kernel<32>::run(arguments...);
}
template <template <int> class Kernel, class... Arguments>
__attribute__((target("avx512f,avx512vl,avx512dq"))) void runAvx512(Arguments... arguments) noexcept
{
  Kernel<64>::run(arguments...);
}
#endif

/// Runs Kernel<bytes of a register>.
template <template <int> class Kernel, class... Arguments>
void run(Arguments... arguments) noexcept
{
#if defined(__i386__) || defined(__x86_64__)
  if (gInstructions == TpointStream::kAvx512)
    return runAvx512<Kernel>(arguments...);
  if (gInstructions == TpointStream::kAvx2)
    return runAvx2<Kernel>(arguments...);
#endif
  Kernel<16>::run(arguments...);
}

/// Points of kSize components, or vectors without the matrix's last row, times a matrix. A register holds some whole
/// points, and in the lanes behind them a part of the next.
template <class Real, int kSize, bool kTranslates>
struct Transform
{
  template <int kBytes>
  struct Kernel
  {
    static constexpr int kLanes = kBytes / int(sizeof(Real));
    static constexpr int kStep = kLanes / kSize * kSize;                    // components
    typedef Real Lanes __attribute__((vector_size(kLanes * sizeof(Real)))); // NOLINT(modernize-use-using)

    /// In each lane of a whole point component \p kWhich of the point that the lane belongs to.
    template <int kWhich, int... kLane>
    INLINE Lanes spread(const Lanes& v, std::integer_sequence<int, kLane...>) noexcept
    {
      return __builtin_shufflevector(v, v, (kLane < kStep ? kLane / kSize * kSize + kWhich : -1)...);
    }

    INLINE Lanes product(const Lanes& v, const Lanes (&rows)[4]) noexcept
    {
      constexpr auto lanes = std::make_integer_sequence<int, kLanes>();
      Lanes sum = spread<0>(v, lanes) * rows[0] + spread<1>(v, lanes) * rows[1];
      sum = sum + spread<2>(v, lanes) * rows[2];
      if constexpr (kSize == 4)
        return sum + spread<3>(v, lanes) * rows[3];
      return kTranslates ? sum + rows[3] : sum;
    }

    INLINE void run(const Real* from, Real* to, std::size_t count, const Real* m) noexcept
    {
      if constexpr (kLanes < kSize)
        runOneByOne(from, to, count, m);
      else
        runInLanes(from, to, count * kSize, m);
    }

    INLINE void runOneByOne(const Real* from, Real* to, std::size_t count, const Real* m) noexcept
    {
      for (; count != 0; --count, from += kSize, to += kSize)
      {
        const Real x = from[0], y = from[1], z = from[2], w = kSize == 4 ? from[kSize - 1] : 1;
        for (int i = 0; i < kSize; ++i)
        {
          const Real sum = x * m[i] + y * m[4 + i] + z * m[8 + i];
          to[i] = kTranslates ? sum + w * m[12 + i] : sum;
        }
      }
    }

    INLINE void runInLanes(const Real* from, Real* to, std::size_t size, const Real* matrix) noexcept
    {
      Lanes rows[4];
      for (int row = 0; row < 4; ++row)
      {
        for (int lane = 0; lane < kLanes; ++lane)
          rows[row][lane] = matrix[row * 4 + lane % kSize];
      }
      std::size_t i = 0;
      if (size >= kLanes)
      {
        // A store goes beyond the whole points. What it hits has been loaded before, for `to` may be `from`.
        Lanes v;
        std::memcpy(&v, from, sizeof v);
        for (; i + kStep + kLanes <= size; i += kStep)
        {
          Lanes next;
          std::memcpy(&next, from + i + kStep, sizeof next);
          const Lanes result = product(v, rows);
          std::memcpy(to + i, &result, sizeof result);
          v = next;
        }
        const Lanes result = product(v, rows);
        std::memcpy(to + i, &result, kStep * sizeof(Real));
        i += kStep;
      }
      if (i < size)
      {
        Lanes v = {};
        std::memcpy(&v, from + i, (size - i) * sizeof(Real));
        v = product(v, rows);
        std::memcpy(to + i, &v, (size - i) * sizeof(Real));
      }
    }
  };
};

template <class Real>
struct Normalize
{
  template <int>
  struct Kernel
  {
    INLINE void run(const Real* from, Real* to, std::size_t count) noexcept
    {
      constexpr std::size_t kBlock = 64;
      Real factors[kBlock] = {};
      while (count != 0)
      {
        const std::size_t block = std::min(count, kBlock);
        for (std::size_t i = 0; i < block; ++i)
        {
          const Real* const v = from + 3 * i;
          factors[i] = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
        }
        for (Real& each : factors) // of a full block: the numbers behind a shorter one do no harm
        {
          const Real squared = each, factor = 1 / std::sqrt(squared);
          const bool stays = (squared <= TgeometryTraits<Real>::kNoNorm) |
                             (Tcomponents::magnitude(squared - 1) <= Real(kUnitNormTolerance));
          each = stays ? 1 : factor;
        }
        for (std::size_t i = 0; i < block; ++i)
        {
          for (std::size_t j = 0; j < 3; ++j)
            to[3 * i + j] = from[3 * i + j] * factors[i];
        }
        from += 3 * block;
        to += 3 * block;
        count -= block;
      }
    }
  };
};

/// The least three components and then the greatest, of points of kSize components.
template <class Real, int kSize>
struct Bounds
{
  template <int kBytes>
  struct Kernel
  {
    static constexpr int kLanes = kBytes / int(sizeof(Real));
    typedef Real Lanes __attribute__((vector_size(kBytes))); // NOLINT(modernize-use-using)

    // As the components follow each other: the lanes' numbers modulo 3 tell them apart.
    Lanes low[3], high[3];
    Real* extremes;

    INLINE void run(const Real* from, std::size_t count, Real* extremes) noexcept
    {
      constexpr Real kInfinity = std::numeric_limits<Real>::infinity();
      std::fill_n(extremes, 3, kInfinity);
      std::fill_n(extremes + 3, 3, -kInfinity);
      const Lanes most = Lanes{} + kInfinity;
      Kernel kernel{{most, most, most}, {-most, -most, -most}, extremes};
      if constexpr (kSize == 3)
        kernel.take(from, count * 3);
      else
      {
        constexpr std::size_t kBlock = 64;
        Real places[kBlock * 3];
        while (count != 0)
        {
          const std::size_t block = std::min(count, kBlock);
          for (std::size_t i = 0; i < block; ++i)
          {
            const Real factor = 1 / from[4 * i + 3]; // 1 changes nothing
            for (std::size_t j = 0; j < 3; ++j)
              places[3 * i + j] = from[4 * i + j] * factor;
          }
          kernel.take(places, block * 3);
          from += 4 * block;
          count -= block;
        }
      }
      for (std::size_t lane = 0; lane < 3 * kLanes; ++lane)
        kernel.extend(lane % 3, kernel.low[lane / kLanes][lane % kLanes], kernel.high[lane / kLanes][lane % kLanes]);
    }

    [[gnu::always_inline]] inline void take(const Real* from, std::size_t size) noexcept
    {
      std::size_t i = 0;
      for (; i + 3 * kLanes <= size; i += 3 * kLanes)
      {
        for (int k = 0; k < 3; ++k)
        {
          Lanes v;
          std::memcpy(&v, from + i + k * kLanes, sizeof v);
          low[k] = v < low[k] ? v : low[k];
          high[k] = v > high[k] ? v : high[k];
        }
      }
      for (; i < size; ++i)
        extend(i % 3, from[i], from[i]);
    }
    [[gnu::always_inline]] inline void extend(std::size_t component, Real least, Real greatest) noexcept
    {
      Real &lowest = extremes[component], &highest = extremes[component + 3];
      lowest = least < lowest ? least : lowest;
      highest = greatest > highest ? greatest : highest;
    }
  };
};

template <bool kTranslates, class Value, class Real>
void transformAll(const Value* from, Value* to, std::size_t count, const TmatrixOf<Real>& m) noexcept
{
  constexpr int kSize = sizeof(Value) / sizeof(Real);
  run<Transform<Real, kSize, kTranslates>::template Kernel>(reinterpret_cast<const Real*>(from),
                                                            reinterpret_cast<Real*>(to), count, m.array());
}

template <class Real>
void normalizeAll(const TvectorOf<Real>* from, TvectorOf<Real>* to, std::size_t count) noexcept
{
  run<Normalize<Real>::template Kernel>(reinterpret_cast<const Real*>(from), reinterpret_cast<Real*>(to), count);
}

template <class Point>
bool boundsOfAll(const Point* points, std::size_t count, Point& low, Point& high) noexcept
{
  using Real = std::remove_reference_t<decltype(low[0])>;
  Real extremes[6];
  run<Bounds<Real, sizeof(Point) / sizeof(Real)>::template Kernel>(reinterpret_cast<const Real*>(points), count,
                                                                   extremes);
  for (int i = 0; i < 3; ++i)
  {
    if (!(extremes[i] <= extremes[i + 3]))
      return false;
  }
  // Which zero came first must not show.
  low.set(extremes[0] + 0, extremes[1] + 0, extremes[2] + 0);
  high.set(extremes[3] + 0, extremes[4] + 0, extremes[5] + 0);
  return true;
}

} // namespace

void TpointStream::transform(const T3dDblPoint* from, T3dDblPoint* to, std::size_t count,
                             const T4dDblMatrix& m) noexcept
{
  transformAll<true>(from, to, count, m);
}

void TpointStream::transform(const T4dDblPoint* from, T4dDblPoint* to, std::size_t count,
                             const T4dDblMatrix& m) noexcept
{
  transformAll<true>(from, to, count, m);
}

void TpointStream::transform(const T4dDblVector* from, T4dDblVector* to, std::size_t count,
                             const T4dDblMatrix& m) noexcept
{
  transformAll<false>(from, to, count, m);
}

void TpointStream::transform(const T3dFltPoint* from, T3dFltPoint* to, std::size_t count,
                             const T4dFltMatrix& m) noexcept
{
  transformAll<true>(from, to, count, m);
}

void TpointStream::transform(const T4dFltPoint* from, T4dFltPoint* to, std::size_t count,
                             const T4dFltMatrix& m) noexcept
{
  transformAll<true>(from, to, count, m);
}

void TpointStream::transform(const T4dFltVector* from, T4dFltVector* to, std::size_t count,
                             const T4dFltMatrix& m) noexcept
{
  transformAll<false>(from, to, count, m);
}

void TpointStream::normalize(const T4dDblVector* from, T4dDblVector* to, std::size_t count) noexcept
{
  normalizeAll(from, to, count);
}

void TpointStream::normalize(const T4dFltVector* from, T4dFltVector* to, std::size_t count) noexcept
{
  normalizeAll(from, to, count);
}

bool TpointStream::bounds(const T3dDblPoint* points, std::size_t count, T3dDblPoint& low, T3dDblPoint& high) noexcept
{
  return boundsOfAll(points, count, low, high);
}

bool TpointStream::bounds(const T3dFltPoint* points, std::size_t count, T3dFltPoint& low, T3dFltPoint& high) noexcept
{
  return boundsOfAll(points, count, low, high);
}

bool TpointStream::bounds(const T4dDblPoint* points, std::size_t count, T4dDblPoint& low, T4dDblPoint& high) noexcept
{
  return boundsOfAll(points, count, low, high);
}

bool TpointStream::bounds(const T4dFltPoint* points, std::size_t count, T4dFltPoint& low, T4dFltPoint& high) noexcept
{
  return boundsOfAll(points, count, low, high);
}

TpointStream::Instructions TpointStream::instructions() noexcept
{
  return gInstructions;
}

void TpointStream::limit(Instructions instructions) noexcept
{
  gInstructions = std::min(available(), instructions);
}
