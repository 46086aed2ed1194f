/// \file
/// Mapped memory: where large buffers come from.

#pragma once

#include "Foundation/Platform/Export.h"

/// \p size bytes for the use that \p tag names, or null.
FOUNDATION_API void* mmapAlloc(unsigned int size, const char* tag);

/// Moves \p block to one of \p size bytes, keeping its contents. Null when there is no memory; the block then stays.
FOUNDATION_API void* mmapRealloc(void* block, unsigned int size, const char* tag);

/// Gives \p block back and returns how many bytes it had.
FOUNDATION_API unsigned int mmapFree(void* block);
