/// \file
/// Arrays of points, vectors, matrices and rotations. What they can do stands in TtypedArray.h and Tarray.h.
///
/// Their elements are packed: data() is what TpointStream and code that takes bare numbers want.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Math/T4dDblVector.h"
#include "Foundation/Math/TdblPoint.h"
#include "Foundation/Math/TxformMatrix.h"

// clang-format off
class T3dDblPointArray : public TtypedArray<T3dDblPoint> { public: using TtypedArray::TtypedArray; };
class T3dFltPointArray : public TtypedArray<T3dFltPoint> { public: using TtypedArray::TtypedArray; };
class T3dFltPointPtrArray : public TtypedArray<T3dFltPoint*> { public: using TtypedArray::TtypedArray; };
class T3dFltQuadPointsArray : public TtypedArray<T3dFltPoint[4]> { public: using TtypedArray::TtypedArray; };
class T4dDblMatrixArray : public TtypedArray<T4dDblMatrix> { public: using TtypedArray::TtypedArray; };
class T4dDblPointArray : public TtypedArray<T4dDblPoint> { public: using TtypedArray::TtypedArray; };
class T4dDblPointPtrArray : public TtypedArray<T4dDblPoint*> { public: using TtypedArray::TtypedArray; };
class T4dDblVectorArray : public TtypedArray<T4dDblVector> { public: using TtypedArray::TtypedArray; };
class T4dDblVectorPtrArray : public TtypedArray<T4dDblVector*> { public: using TtypedArray::TtypedArray; };
class T4dFltMatrixArray : public TtypedArray<T4dFltMatrix> { public: using TtypedArray::TtypedArray; };
class T4dFltPointArray : public TtypedArray<T4dFltPoint> { public: using TtypedArray::TtypedArray; };
class T4dFltPointPtrArray : public TtypedArray<T4dFltPoint*> { public: using TtypedArray::TtypedArray; };
class T4dFltQuadPointsArray : public TtypedArray<T4dFltPoint[4]> { public: using TtypedArray::TtypedArray; };
class T4dFltVectorArray : public TtypedArray<T4dFltVector> { public: using TtypedArray::TtypedArray; };
class T4dFltVectorPtrArray : public TtypedArray<T4dFltVector*> { public: using TtypedArray::TtypedArray; };
class TdblPointArray : public TtypedArray<TdblPoint> { public: using TtypedArray::TtypedArray; };
class TpointArray : public TtypedArray<Tpoint> { public: using TtypedArray::TtypedArray; };
class TquadPointsArray : public TtypedArray<T4dDblPoint[4]> { public: using TtypedArray::TtypedArray; };
class TquaternionArray : public TtypedArray<Tquaternion> { public: using TtypedArray::TtypedArray; };
class TrotateXYZArray : public TtypedArray<TrotateXYZ> { public: using TtypedArray::TtypedArray; };
class TxformMatrixArray : public TtypedArray<TxformMatrix> { public: using TtypedArray::TtypedArray; };
// clang-format on
