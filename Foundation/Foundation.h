/// \file
/// Every public header of the library. Include the header of the class you need instead where build time counts.

#pragma once

#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Memory/CompactArenas.h"
#include "Foundation/Memory/Poison.h"
#include "Foundation/Memory/Tallocator.h"
#include "Foundation/Memory/TarenaRegistry.h"
#include "Foundation/Memory/TbaseArena.h"
#include "Foundation/Memory/TcompactArena.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TheapArena.h"
#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Memory/TpureArena.h"
#include "Foundation/Memory/TstackArena.h"
#include "Foundation/Memory/TthreadArena.h"
#include "Foundation/Memory/TvariantArena.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/TcharString.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/String/TstringCount.h"
#include "Foundation/String/TstringId.h"
