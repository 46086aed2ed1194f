/// \file
/// FOUNDATION_API: marks what the shared library exports.
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
