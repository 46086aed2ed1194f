#!/bin/bash
# gdb.sh: installs the library and compares what gdb shows of its classes, without any setting of the user's, with what
# it should. gdb reads what is installed for it below the prefix as it reads it below /usr. From the environment: SOURCE,
# BUILD, CXX, CXXFLAGS.
set -eu
work=$BUILD/gdb
rm -rf "$work"
cmake --install "$BUILD" --prefix "$work/usr" > /dev/null
$CXX $CXXFLAGS -g -O0 -std=c++17 -fno-gnu-keywords "$SOURCE/tests/repository/gdb.cpp" -I "$work/usr/include" \
  -L "$work/usr/lib" -lFoundation -Wl,-rpath,"$work/usr/lib" -o "$work/shown"
line=$(grep -n 'stop here' "$SOURCE/tests/repository/gdb.cpp" | cut -d : -f 1)
scripts=$work/usr/share/gdb/auto-load
commands=()
while read -r expression _; do
  commands+=(-ex "print $expression")
done < "$SOURCE/tests/repository/gdb.txt"
DEBUGINFOD_URLS= gdb -nx -batch -iex "set auto-load scripts-directory $scripts" -iex "set auto-load safe-path $scripts" \
  -ex "break gdb.cpp:$line" -ex run "${commands[@]}" -ex kill "$work/shown" > "$work/log" 2>&1 || true
grep '^\$' "$work/log" | sed 's/^[^=]*= //' > "$work/shows"
cut -d ' ' -f 2- "$SOURCE/tests/repository/gdb.txt" | diff - "$work/shows" || { cat "$work/log"; exit 1; }
