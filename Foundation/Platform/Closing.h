/// \file
/// g_bClosing: whether the process is letting the library go.

#pragma once

#include "Foundation/Platform/Export.h"

/// Not 0 from the moment the library is unloaded, or the process ends, and before the library's own static objects are
/// destroyed. Servers deliver and transfer nothing from then on. A program may set it earlier.
extern FOUNDATION_API int g_bClosing;
