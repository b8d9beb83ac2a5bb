#!/usr/bin/env bash
# The library shows exactly the functions that its header declares.
# Usage: check_exports.sh LIBRARY
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
declared=$(mktemp)
trap 'rm "$declared"' EXIT
sed -n 's/^NUV_PRINTER_API.*[ *]\(nuv_[a-z_]*\)(.*/\1/p' "$here/../../include/nuvprinter/nuvprinter.h" > "$declared"
"$here/../api/check_exports.sh" "$1" "$declared"
