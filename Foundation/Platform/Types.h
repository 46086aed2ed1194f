/// \file
/// Integers of fixed width, the same on every platform. Usable from C.
///
/// A 32-bit quantity of the interface (an id, a chunk size, ticks, a hash) is Tint32 or TuInt32: `long` where long
/// has 32 bits, as on the home platform, and `int` elsewhere, so that it converts without a cast on both.

#pragma once

#include <limits.h>

#if LONG_MAX == 0x7FFFFFFFL
typedef long Tint32;           // NOLINT(modernize-use-using): C reads this header too
typedef unsigned long TuInt32; // NOLINT(modernize-use-using)
#else
typedef int Tint32;           // NOLINT(modernize-use-using)
typedef unsigned int TuInt32; // NOLINT(modernize-use-using)
#endif
typedef signed char Tint8;          // NOLINT(modernize-use-using)
typedef unsigned char TuInt8;       // NOLINT(modernize-use-using)
typedef short Tint16;               // NOLINT(modernize-use-using)
typedef unsigned short TuInt16;     // NOLINT(modernize-use-using)
typedef long long Tint64;           // NOLINT(modernize-use-using)
typedef unsigned long long TuInt64; // NOLINT(modernize-use-using)

#ifdef __cplusplus
static_assert(sizeof(Tint32) == 4 && sizeof(TuInt32) == 4, "32-bit quantities have 32 bits");
static_assert(sizeof(Tint16) == 2 && sizeof(TuInt16) == 2, "16-bit quantities have 16 bits");
static_assert(sizeof(Tint64) == 8 && sizeof(TuInt64) == 8, "64-bit quantities have 64 bits");
#endif
