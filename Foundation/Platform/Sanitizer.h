/// \file
/// FOUNDATION_ASAN: defined where AddressSanitizer looks on, in either compiler's spelling.

#pragma once

#ifdef __has_feature // Clang
#  if __has_feature(address_sanitizer)
#    define FOUNDATION_ASAN
#  endif
#endif
#ifdef __SANITIZE_ADDRESS__ // GCC
#  define FOUNDATION_ASAN
#endif
