#!/usr/bin/env bash
# Compiles the files of the Windows system, with the project's warnings, for Windows; links nothing.
# Usage: compile_windows.sh SYSROOT (Qt 5 and OpenSSL for Windows, unpacked)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

sysroot=$1
# Libraries of headers only are the same for every system.
headers=$(mktemp -d)
trap 'rm -r "$headers"' EXIT
ln -s /usr/include/nlohmann /usr/include/CLI "$headers"
flags=(-std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -O1
  -Isrc -Iinclude -Itools -Itools/nuvctl -isystem "$headers" -isystem "$sysroot/include"
  -isystem "$sysroot/include/QtCore" -isystem "$sysroot/include/QtNetwork")
failed=0
while read -r file; do
  if x86_64-w64-mingw32-g++-posix "${flags[@]}" -c -o /dev/null "$file"; then
    echo "compiled: $file"
  else
    echo "FAILED: $file"
    failed=1
  fi
done < <(git ls-files -co --exclude-standard '*_windows.cpp' '*_win.cpp')
exit "$failed"
