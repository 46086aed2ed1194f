/// \file
/// Sorted arrays of numbers and addresses. What they can do stands in TsortedArray.h.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TsortedArray.h"
#include "Foundation/Platform/Types.h"

// clang-format off
class TdoubleSortedArray : public TtypedSortedArray<double> { public: using TtypedSortedArray::TtypedSortedArray; };
class TsecondsSortedArray : public TtypedSortedArray<float> { public: using TtypedSortedArray::TtypedSortedArray; };
class TuInt16SortedArray : public TtypedSortedArray<TuInt16> { public: using TtypedSortedArray::TtypedSortedArray; };
class TvoidPtrSortedArray : public TtypedSortedArray<void*> { public: using TtypedSortedArray::TtypedSortedArray; };
// clang-format on
