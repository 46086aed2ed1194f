/// \file
/// Arrays of strings. They share the texts of the strings given to them, as copies of strings do, and let go of their
/// shares with the elements. What they can do stands in TtypedArray.h and TsortedArray.h; searches compare texts.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TsortedArray.h"
#include "Foundation/String/Tstring.h"

// A string is a pointer to what it shares, wherever it lies.
template <>
inline constexpr bool kMovesBitwise<Tstring> = true;

// clang-format off
class TstringArray : public TtypedObjArray<Tstring> { public: using TtypedArray::TtypedArray; };
class TsortedStringArray : public TtypedSortedArray<Tstring> { public: using TtypedSortedArray::TtypedSortedArray; };
// clang-format on
