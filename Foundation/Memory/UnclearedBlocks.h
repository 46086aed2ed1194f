/// \file
/// Blocks of the process allocator for those that write to them anyway, as arrays do. Internal to the library.

#pragma once

/// As mmapAlloc() and mmapRealloc(), but large blocks are not filled with zeros.
void* takeUncleared(unsigned int size, const char* tag);
void* resizeUncleared(void* block, unsigned int size, const char* tag);
