/// \file
/// The names of the geometry, declared but not defined, for headers that only name them; the axes.
///
/// Each class comes in double and in single precision, as one class template: a forward declaration of yours includes
/// this header, since `class T4dDblVector;` would declare another class. What differs between the precisions stands in
/// GeometryTraits.h; the conventions (row vectors, order of products, angles) in docs/geometry.md.

#pragma once

template <class Real>
class Tpoint3Of;
template <class Real>
class Tpoint4Of;
template <class Real>
class TvectorOf;
template <class Real>
class TtupleOf;
template <class Real>
class TmatrixOf;
template <class Real>
class TmatrixStackOf;
template <class Coordinate>
class TplanePointOf;

using T3dDblPoint = Tpoint3Of<double>;
using T3dFltPoint = Tpoint3Of<float>;
using T4dDblPoint = Tpoint4Of<double>;
using T4dFltPoint = Tpoint4Of<float>;
using T4dDblVector = TvectorOf<double>;
using T4dFltVector = TvectorOf<float>;
using Ttuple = TtupleOf<double>;
using TfltTuple = TtupleOf<float>;
using T4dDblMatrix = TmatrixOf<double>;
using T4dFltMatrix = TmatrixOf<float>;
using T4dDblMatrixStack = TmatrixStackOf<double>;
using T4dFltMatrixStack = TmatrixStackOf<float>;

using TdblPoint = TplanePointOf<double>;
using TfltPoint = TplanePointOf<float>;
using Tpoint = TplanePointOf<short>;
using OSpoint = Tpoint; // no platform of ours has a structure of that name

enum Taxis : int
{
  kX,
  kY,
  kZ
};
