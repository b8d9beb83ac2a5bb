#!/usr/bin/env bash
# The library shows exactly the names of the list: nothing missing, nothing else.
# Usage: check_exports.sh LIBRARY LIST
set -euo pipefail
shown=$(nm --dynamic --defined-only --without-symbol-versions "$1" | awk '$2 != "A" {print $3}' | sort)
diff <(sort "$2") <(printf '%s\n' "$shown") || { echo "exports differ from $2"; exit 1; }
echo "$(printf '%s\n' "$shown" | wc -l) exports"
