/// \file
/// The four compact arenas of the process, for very many records of up to 8, 16, 24 or 32 bytes.
///
/// Each function is that of TcompactArena on the arena of its size, whose pages are of 0x40000 bytes from the process
/// allocator. The four are a family: a block may be released through any of them. They work in static initialisers. At
/// the end of the program, or when the library is unloaded, all blocks are gone and the arenas are as at the beginning.

#pragma once

#include "Foundation/Platform/Export.h"

/// \name A block of that size, aligned to 8, not cleared; null when there is no memory.
/// @{
FOUNDATION_API void* compactAllocate8();
FOUNDATION_API void* compactAllocate16();
FOUNDATION_API void* compactAllocate24();
FOUNDATION_API void* compactAllocate32();
/// @}

/// \name Releases a block of any of the four arenas: 1 when there was such a block, else 0.
/// @{
FOUNDATION_API unsigned char compactDeallocate8(void* block);
FOUNDATION_API unsigned char compactDeallocate16(void* block);
FOUNDATION_API unsigned char compactDeallocate24(void* block);
FOUNDATION_API unsigned char compactDeallocate32(void* block);
/// @}

/// \name Makes room for that many blocks in advance: 0 when there is no memory, else 1.
/// @{
FOUNDATION_API unsigned char compactPreAllocate8(unsigned int blocks);
FOUNDATION_API unsigned char compactPreAllocate16(unsigned int blocks);
FOUNDATION_API unsigned char compactPreAllocate24(unsigned int blocks);
FOUNDATION_API unsigned char compactPreAllocate32(unsigned int blocks);
/// @}
