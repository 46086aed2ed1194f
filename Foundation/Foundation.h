/// \file
/// Every public header of the library. Include the header of the class you need instead where build time counts.

#pragma once

#include "Foundation/Debug/Texception.h"
#include "Foundation/Debug/Treporter.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Memory/Tallocator.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/TcharString.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/String/TstringCount.h"
#include "Foundation/String/TstringId.h"
