/// \file
/// FOUNDATION_API: marks what the shared library exports. FOUNDATION_PRINTF: lets the compiler check printf's arguments.
///
/// On Windows the library, built with FOUNDATION_BUILDING defined, exports and its users import. Elsewhere whatever
/// lacks the mark is hidden by the compiler's visibility option.

#pragma once

#if defined(_WIN32) && defined(FOUNDATION_BUILDING)
#  define FOUNDATION_API __declspec(dllexport)
#elif defined(_WIN32)
#  define FOUNDATION_API __declspec(dllimport)
#else
#  define FOUNDATION_API __attribute__((visibility("default")))
#endif

// Positions of the pattern and of the first argument, from 1, `this` counting; 0 for a va_list.
#if defined(__MINGW32__) && !defined(__clang__)
#  define FOUNDATION_PRINTF(pattern, arguments) __attribute__((format(gnu_printf, pattern, arguments)))
#elif defined(__GNUC__)
#  define FOUNDATION_PRINTF(pattern, arguments) __attribute__((format(printf, pattern, arguments)))
#else
#  define FOUNDATION_PRINTF(pattern, arguments)
#endif
