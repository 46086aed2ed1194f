/// \file
/// Arrays of pointers. They own nothing of what their elements point to. Those of points and vectors stand in
/// Foundation/Math/PointArrays.h.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Platform/Types.h"

class T3dFltPointArray;
class T4dDblPointArray;
class T4dFltPointArray;
class TargList;
class TclientServer;
class TdataVectorArray;
class TdbTrace;
class Tmetaclass;
class Tstring;
class TtimeValue;
class Ttrigger;

// clang-format off
class T3dFltPointArrayPtrArray : public TtypedArray<T3dFltPointArray*> { public: using TtypedArray::TtypedArray; };
class T4dDblPointArrayPtrArray : public TtypedArray<T4dDblPointArray*> { public: using TtypedArray::TtypedArray; };
class T4dFltPointArrayPtrArray : public TtypedArray<T4dFltPointArray*> { public: using TtypedArray::TtypedArray; };
class TargListPtrArray : public TtypedArray<TargList*> { public: using TtypedArray::TtypedArray; };
class TbooleanArrayPtrArray : public TtypedArray<TbooleanArray*> { public: using TtypedArray::TtypedArray; };
class TcharPtrArray : public TtypedArray<char*> { public: using TtypedArray::TtypedArray; };
class TclientServerPtrArray : public TtypedArray<TclientServer*> { public: using TtypedArray::TtypedArray; };
class TdataVectorArrayPtrArray : public TtypedArray<TdataVectorArray*> { public: using TtypedArray::TtypedArray; };
class TdbTraceArray : public TtypedArray<TdbTrace*> { public: using TtypedArray::TtypedArray; };
class TdoubleArrayPtrArray : public TtypedArray<TdoubleArray*> { public: using TtypedArray::TtypedArray; };
class TdoublePtrArray : public TtypedArray<double*> { public: using TtypedArray::TtypedArray; };
class TfloatArrayPtrArray : public TtypedArray<TfloatArray*> { public: using TtypedArray::TtypedArray; };
class TfloatArrayPtrArrayPtrArray : public TtypedArray<TfloatArrayPtrArray*> { public: using TtypedArray::TtypedArray; };
class Tint32ArrayPtrArray : public TtypedArray<Tint32Array*> { public: using TtypedArray::TtypedArray; };
class Tint32PtrArray : public TtypedArray<Tint32*> { public: using TtypedArray::TtypedArray; };
class TsecondsArrayPtrArray : public TtypedArray<TfloatArray*> { public: using TtypedArray::TtypedArray; };
class TstringPtrArray : public TtypedArray<Tstring*> { public: using TtypedArray::TtypedArray; };
class TtimeValueArrayPtrArray : public TtypedArray<TtimeValueArray*> { public: using TtypedArray::TtypedArray; };
class TtimeValuePtrArray : public TtypedArray<TtimeValue**> { public: using TtypedArray::TtypedArray; };
class TtriggerPtrArray : public TtypedArray<Ttrigger*> { public: using TtypedArray::TtypedArray; };
class TtypeidArray : public TtypedArray<Tmetaclass*> { public: using TtypedArray::TtypedArray; };
class TuInt8ArrayPtrArray : public TtypedArray<TuInt8Array*> { public: using TtypedArray::TtypedArray; };
class TvaluesArrayPtrArray : public TtypedArray<TdoubleArray*> { public: using TtypedArray::TtypedArray; };
class TvoidPtrArray : public TtypedArray<void*> { public: using TtypedArray::TtypedArray; };
// clang-format on
