#!/bin/bash
# consumer.sh WAY: uses the library in a project of its own, tests/consumer.
#
#   install        installs into a folder, moves that, and looks for paths of this machine in it
#   package        builds the consumer with the moved CMake package
#   pkgconfig      with the moved pkg-config file
#   subdirectory   with the sources, by add_subdirectory
#
# Each builds with the compiler and flags of the build at hand and runs the programs. From the environment: SOURCE (the
# source tree), BUILD (the build folder), CC, CFLAGS, CXX, CXXFLAGS, TOOLCHAIN and EMULATOR (the last two may be empty).
set -eu
way=$1
stage=$BUILD/consumer
installed=$stage/moved
work=$stage/$way
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"

# build_with_cmake OPTION...
build_with_cmake()
{
  cmake -G Ninja -S "$SOURCE/tests/consumer" -B "$work" ${TOOLCHAIN:+-D CMAKE_TOOLCHAIN_FILE="$TOOLCHAIN"} \
    -D CMAKE_C_COMPILER="$CC" -D CMAKE_C_FLAGS="$CFLAGS $warnings" \
    -D CMAKE_CXX_COMPILER="$CXX" -D CMAKE_CXX_FLAGS="$CXXFLAGS $warnings" "$@"
  cmake --build "$work"
}

# run FOLDER-OF-THE-DLL: the writer makes a file, the reader checks it.
run()
{
  local exe=${TOOLCHAIN:+.exe}
  export WINEPATH="Z:${1//\//\\}"
  cd "$work"
  $EMULATOR ./writer$exe written.iff
  $EMULATOR ./reader$exe written.iff
}

rm -rf "$work"
case $way in
  install)
    rm -rf "$installed"
    cmake --install "$BUILD" --prefix "$work"
    mv "$work" "$installed"
    binaries=--text
    case $CXXFLAGS in
      *-fsanitize=*) binaries=-I ;; # their reports name source files in full, whatever the compiler is told
    esac
    # The whole path, not the end of another; and the compiler's own DLLs hold those of its makers.
    if grep -rlP $binaries --exclude='lib*-*.dll' "(?<![\\w./-])\\Q$SOURCE\\E/" "$installed"; then
      echo "FAILED: these files hold a path of this machine"
      exit 1
    fi
    if grep -rnE '(^|[^[:alnum:]_.}>-])/[[:alnum:]]' "$installed"/lib*/cmake "$installed"/lib*/pkgconfig; then
      echo "FAILED: these lines hold an absolute path"
      exit 1
    fi
    ;;
  package)
    build_with_cmake -D CMAKE_PREFIX_PATH="$installed" -D CMAKE_FIND_ROOT_PATH="$installed"
    run "$installed/bin"
    ;;
  subdirectory)
    build_with_cmake -D FOUNDATION_SOURCE="$SOURCE"
    run "$work/Foundation/Foundation"
    ;;
  pkgconfig)
    mkdir -p "$work"
    exe=${TOOLCHAIN:+.exe}
    PKG_CONFIG_LIBDIR=$(echo "$installed"/lib*/pkgconfig)
    export PKG_CONFIG_LIBDIR LD_LIBRARY_PATH=$installed/lib
    $CXX $CXXFLAGS -std=gnu++17 $warnings "$SOURCE/tests/consumer/writer.cpp" -o "$work/writer$exe" \
      $(pkg-config --cflags --libs Foundation)
    $CC $CFLAGS -std=c99 $warnings "$SOURCE/tests/consumer/reader.c" -o "$work/reader$exe" \
      $(pkg-config --cflags-only-I --libs Foundation)
    run "$installed/bin"
    ;;
esac
