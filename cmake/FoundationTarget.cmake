# What every target of ours has, libraries, programs and tests alike.
function(foundation_target target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # Neither debug information nor __FILE__ tells where the library was built.
  target_compile_options(${target} PRIVATE
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
  if(FOUNDATION_WARNINGS) # signs apart, which GCC leaves out of -Wconversion and Clang does not
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wno-sign-conversion -Wshadow -Werror)
  endif()
  # The same floating-point results on every platform: no sum is fused with a product, nothing is computed in 80 bits.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-ffp-contract=off>)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse)
  endif()
  if(CMAKE_SYSTEM_NAME STREQUAL Linux) # where 32 bits end at 2 GB, and in 2038
    target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
  endif()
endfunction()
