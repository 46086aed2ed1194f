/// \file
/// Every public header of the library. Include the header of the class you need instead where build time counts.

#pragma once

#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/CDumpContext.h"
#include "Foundation/Debug/TassertAlert.h"
#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/TdebugOutputFile.h"
#include "Foundation/Debug/TerrorHandler.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Debug/Treporter.h"
#include "Foundation/Debug/TstackTrace.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Memory/Tallocator.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/TcharString.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/String/TstringCount.h"
#include "Foundation/String/TstringId.h"
