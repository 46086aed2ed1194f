/// \file
/// Every public header of the library. Include the header of the class you need instead where build time counts.

#pragma once

#include "Foundation/Container/Tdictionary.h"
#include "Foundation/Container/ThashTable.h"
#include "Foundation/Container/TptrHashTable.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Memory/Tallocator.h"
#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Memory/TresourceQuery.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
