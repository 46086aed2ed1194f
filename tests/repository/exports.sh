#!/bin/bash
# exports.sh LIBRARY LIST [--update]: whether the symbols that LIBRARY exports are those of LIST; prints the difference
# (< missing from the library, > not in the list), or writes the list anew. NM and OBJDUMP name the tools.
set -eu
export LC_ALL=C
library=$1 list=$2

symbols()
{
  case $library in
    *.dll) ${OBJDUMP:-objdump} -p "$library" | awk '/Ordinal\/Name Pointer/ { on = 1; next } on && !NF { exit } on { print $NF }' ;;
    *) ${NM:-nm} -D --defined-only "$library" | awk '$2 ~ /[A-TX-Z]/ && $3 !~ /^__odr_asan/ { print $3 }' ;; # weak ones come and go with the optimiser
  esac | sort -u
}

found=$(symbols)
[ -n "$found" ] || { echo "no symbols in $library"; exit 1; }
if [ "${3-}" = --update ]; then
  echo "$found" > "$list"
else
  diff "$list" - <<< "$found"
fi
echo "$(wc -l < "$list") symbols"
