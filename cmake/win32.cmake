# 32-bit Windows, with the cross compiler of Debian's package g++-mingw-w64-i686-posix; programs run in Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
# What Wine's symbol library reads, for stack traces.
set(CMAKE_C_FLAGS_RELWITHDEBINFO_INIT -gdwarf-4)
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO_INIT -gdwarf-4)
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine)
