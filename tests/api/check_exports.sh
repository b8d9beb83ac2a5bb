#!/usr/bin/env bash
# The library shows exactly the names of the list: nothing missing, nothing else.
# Usage: check_exports.sh LIBRARY LIST
set -euo pipefail
case "$1" in
  *.dll)
    # The lines behind the heading of the name table: an ordinal in brackets and the name.
    shown=$(x86_64-w64-mingw32-objdump -p "$1" |
      sed -n '/Ordinal\/Name Pointer/,/^$/s/^.*\[ *[0-9]*\].* \([^ ]*\)$/\1/p' | sort)
    ;;
  *) shown=$(nm --dynamic --defined-only --without-symbol-versions "$1" | awk '$2 != "A" {print $3}' | sort) ;;
esac
diff --unchanged-line-format= --old-line-format='not exported: %L' \
  --new-line-format="not in $2: %L" <(sort "$2") <(printf '%s\n' "$shown") || exit 1
echo "$(printf '%s\n' "$shown" | wc -l) exports"
