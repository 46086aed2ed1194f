/// \file
/// Every public header of the library. Include the header of the class you need instead where build time counts.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Container/SortedArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Container/Tarray.h"
#include "Foundation/Container/TobjArray.h"
#include "Foundation/Container/TsortedArray.h"
#include "Foundation/Container/Tstack.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Memory/Tallocator.h"
#include "Foundation/Memory/TfootprintInfo.h"
#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/TcharString.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/String/TstringCount.h"
#include "Foundation/String/TstringId.h"
