/// \file
/// Arrays of numbers, characters and truth values. What they can do stands in TtypedArray.h and Tarray.h.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Platform/Types.h"

// clang-format off
class TbooleanArray : public TtypedArray<unsigned char> { public: using TtypedArray::TtypedArray; };
class TcharArray : public TtypedArray<char> { public: using TtypedArray::TtypedArray; };
class TdoubleArray : public TtypedArray<double> { public: using TtypedArray::TtypedArray; };
class TfloatArray : public TtypedArray<float> { public: using TtypedArray::TtypedArray; };
class Tint8Array : public TtypedArray<Tint8> { public: using TtypedArray::TtypedArray; };
class Tint16Array : public TtypedArray<Tint16> { public: using TtypedArray::TtypedArray; };
class Tint32Array : public TtypedArray<Tint32> { public: using TtypedArray::TtypedArray; };
class TportCoordArray : public TtypedArray<short> { public: using TtypedArray::TtypedArray; };
class Tsize_tArray : public TtypedArray<unsigned int> { public: using TtypedArray::TtypedArray; };
class TuCharArray : public TtypedArray<unsigned char> { public: using TtypedArray::TtypedArray; };
class TuInt8Array : public TtypedArray<TuInt8> { public: using TtypedArray::TtypedArray; };
class TuInt16Array : public TtypedArray<TuInt16> { public: using TtypedArray::TtypedArray; };
class TuInt32Array : public TtypedArray<TuInt32> { public: using TtypedArray::TtypedArray; };
// clang-format on
