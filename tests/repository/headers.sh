#!/bin/bash
# headers.sh CC CXX "C-HEADER..." "HEADER...": compiles each public header alone, included twice, in every dialect that
# it promises to be good for; for Windows also behind <windows.h>, in the oldest and the newest. CC and CXX hold a
# compiler and its flags. Run it in the root of the source tree.
set -u
cc=$1 cxx=$2 c_headers=$3 headers=$4
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"

# compile COMPILER FLAGS HEADER PRELUDE
compile()
{
  printf '%s\n#include "%s"\n#include "%s"\nextern int declared;\n' "$4" "$3" "$3" | $1 $2 -fsyntax-only -I. - ||
    { echo "FAILED: $3 with $1 $2 $4"; exit 1; }
}
export -f compile

# jobs PRELUDE C-STANDARDS C++-STANDARDS: the arguments of compile, one after the other
jobs()
{
  local header standard
  for header in $c_headers; do
    for standard in $2; do
      printf '%s\0' "$cc" "-x c -std=$standard $warnings" "$header" "$1"
    done
  done
  for header in $headers; do
    for standard in $3; do
      case $standard in gnu*) standard+=" -fno-gnu-keywords" ;; esac
      printf '%s\0' "$cxx" "-x c++ -std=$standard $warnings" "$header" "$1"
    done
  done
}

all_jobs()
{
  jobs "" "c99 c11 gnu11" "c++17 c++20 c++2b gnu++17 gnu++20 gnu++2b"
  if echo | $cxx -dM -E -x c++ - | grep -q _WIN32; then
    jobs "#include <windows.h>" "c99" "c++17 gnu++2b"
  fi
}

failed=0
for header in $headers; do
  if [ "$header" != Foundation/Foundation.h ] && ! grep -qxF "#include \"$header\"" Foundation/Foundation.h; then
    echo "FAILED: Foundation.h does not include $header"
    failed=1
  fi
done
all_jobs | xargs -0 -n 4 -P "$(nproc)" bash -c 'compile "$@"' compile || failed=1
echo "$(($(all_jobs | tr -cd "\0" | wc -c) / 4)) compilations of $(echo "$headers" | wc -w) headers"
exit $failed
