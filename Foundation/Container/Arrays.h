/// \file
/// The members of the array family, declared but not defined, for headers that only name them.
///
/// NumberArrays.h, PtrArrays.h, SortedArrays.h and StringArrays.h define them; a member whose element is a class of
/// another folder is defined beside that class.

#pragma once

class T3dFltPointArrayPtrArray;
class T3dFltPointPtrArray;
class T4dDblPointArrayPtrArray;
class T4dDblPointPtrArray;
class T4dDblVectorPtrArray;
class T4dFltPointArrayPtrArray;
class T4dFltPointPtrArray;
class T4dFltVectorPtrArray;
class TanimTimeArray;
class TanimTimeSortedArray;
class TargListPtrArray;
class TarrayTrect;
class TbooleanArray;
class TbooleanArrayPtrArray;
class TcharArray;
class TcharPtrArray;
class TclientServerPtrArray;
class TdataVectorArrayPtrArray;
class TdbTraceArray;
class TdoubleArray;
class TdoubleArrayPtrArray;
class TdoublePtrArray;
class TdoubleRangeArray;
class TdoubleSortedArray;
class TfilePathArray;
class TfloatArray;
class TfloatArrayPtrArray;
class TfloatArrayPtrArrayPtrArray;
class Tint16Array;
class Tint32Array;
class Tint32ArrayPtrArray;
class Tint32PtrArray;
class Tint8Array;
class TlineArray;
class TportColorArray;
class TportCoordArray;
class TresIdArray;
class TscaleArray;
class TsecondsArrayPtrArray;
class TsecondsSortedArray;
class Tsize_tArray;
class TsortedStringArray;
class TstringArray;
class TstringPtrArray;
class TtimeValueArray;
class TtimeValueArrayPtrArray;
class TtimeValuePtrArray;
class TtriggerPtrArray;
class TtypeidArray;
class TuCharArray;
class TuInt16Array;
class TuInt16SortedArray;
class TuInt32Array;
class TuInt8Array;
class TuInt8ArrayPtrArray;
class TvaluesArrayPtrArray;
class TvoidPtrArray;
class TvoidPtrSortedArray;
