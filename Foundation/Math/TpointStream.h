/// \file
/// TpointStream: operations on many points or vectors in one call.
///
/// Use it where there are thousands of them, packed, as arrays of points and meshes hold them. It uses the widest
/// vector instructions that the processor has, and its results are the same bits, on every processor, as those of the
/// classes' own operations. From some ten thousand points on it is as fast as memory is.

#pragma once

#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Platform/Export.h"

#include <cstddef>

/// Works on \p count values from \p from on. Results go to \p to, which has room for as many and either is \p from or
/// does not overlap it. A count of 0 is nothing, and addresses may then be null.
///
/// \code
///   TpointStream::transform(mesh.data(), mesh.data(), mesh.length(), model);
///   T3dDblPoint low, high;
///   if (TpointStream::bounds(mesh.data(), mesh.length(), low, high))
///     camera.frame(low, high);
/// \endcode
class TpointStream
{
public:
  /// to[i] = from[i] * m
  FOUNDATION_API static void transform(const T3dDblPoint* from, T3dDblPoint* to, std::size_t count,
                                       const T4dDblMatrix& m) noexcept;
  FOUNDATION_API static void transform(const T4dDblPoint* from, T4dDblPoint* to, std::size_t count,
                                       const T4dDblMatrix& m) noexcept;
  FOUNDATION_API static void transform(const T4dDblVector* from, T4dDblVector* to, std::size_t count,
                                       const T4dDblMatrix& m) noexcept;
  FOUNDATION_API static void transform(const T3dFltPoint* from, T3dFltPoint* to, std::size_t count,
                                       const T4dFltMatrix& m) noexcept;
  FOUNDATION_API static void transform(const T4dFltPoint* from, T4dFltPoint* to, std::size_t count,
                                       const T4dFltMatrix& m) noexcept;
  FOUNDATION_API static void transform(const T4dFltVector* from, T4dFltVector* to, std::size_t count,
                                       const T4dFltMatrix& m) noexcept;

  /// to[i] = from[i].normal()
  FOUNDATION_API static void normalize(const T4dDblVector* from, T4dDblVector* to, std::size_t count) noexcept;
  FOUNDATION_API static void normalize(const T4dFltVector* from, T4dFltVector* to, std::size_t count) noexcept;

  /// The least and the greatest components of the points, of which what is no number is left out. False, and both
  /// unchanged, if for some component there is none. A zero is positive. Homogeneous points count as the places that
  /// they are, in their cartesian form, and so do the results.
  FOUNDATION_API static bool bounds(const T3dDblPoint* points, std::size_t count, T3dDblPoint& low,
                                    T3dDblPoint& high) noexcept;
  FOUNDATION_API static bool bounds(const T3dFltPoint* points, std::size_t count, T3dFltPoint& low,
                                    T3dFltPoint& high) noexcept;
  FOUNDATION_API static bool bounds(const T4dDblPoint* points, std::size_t count, T4dDblPoint& low,
                                    T4dDblPoint& high) noexcept;
  FOUNDATION_API static bool bounds(const T4dFltPoint* points, std::size_t count, T4dFltPoint& low,
                                    T4dFltPoint& high) noexcept;

  enum Instructions
  {
    kSse2,
    kAvx2,
    kAvx512
  };

  /// What the processor has, or less if limit() said so: for measurements, and where wide instructions slow down what
  /// runs beside. Results do not depend on it. A limit holds for the process; set it while no other thread is here.
  FOUNDATION_API static Instructions instructions() noexcept;
  FOUNDATION_API static void limit(Instructions instructions) noexcept;
};
