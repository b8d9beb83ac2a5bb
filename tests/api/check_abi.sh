#!/usr/bin/env bash
# The binary interface of each library is the one that is stored: the exports, all types that they
# reach, the virtual tables of the interfaces. Each Debian has a description of its own, since it holds
# what that system's C++ library makes of strings and lists.
# Usage: check_abi.sh BUILD_FOLDER [--update]    --update: stores what there is
set -euo pipefail
build=$1 update=${2:-}
sources=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
stored=$sources/tests/api/abi/$(. /etc/os-release && echo "$ID-$VERSION_ID")-$(dpkg --print-architecture)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Newer versions would describe what the libraries use of others as well.
only_ours=$(abidw --help 2>&1 | grep -o -- --no-load-undefined-interfaces || true)

# describe LIBRARY HEADERS: in the same words wherever it was built.
describe() {
  abidw --exported-interfaces-only --drop-private-types --headers-dir "$2" --no-corpus-path \
    --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names --no-write-default-sizes \
    --type-id-style hash $only_ours "$build/lib/$1" | sed "s|path='[./]*|path='|" > "$work/$1.abi"
  # What is known by its name only was left out of the debug information.
  ! grep -E "class-decl name='IConnect(ingFramework)?'.* is-declaration-only" "$work/$1.abi"
}
describe libNuvConnect5.so "$sources/include"
describe libNuvFile.so "$sources/nuvfile/include"
describe libnuvprinter.so "$sources/include"

failed=0
for library in libNuvConnect5.so libNuvFile.so libnuvprinter.so; do
  if [ -f "$stored/$library.abi.xz" ]; then
    xz -dc "$stored/$library.abi.xz" > "$work/stored.abi"
    same=1
    abidiff "$work/stored.abi" "$work/$library.abi" > "$work/report" || same=0
    # What hangs together is told again and again, so the two descriptions are shown as well.
    if [ "$same" = 0 ]; then
      head -n 20 "$work/report" | cut -c 1-160
      diff -U 2 "$work/stored.abi" "$work/$library.abi" | head -n 40 || true
    fi
  else
    echo "There is no $stored/$library.abi.xz"
    same=0
  fi
  if [ "$same" = 1 ]; then
    echo "$library: as it was"
  elif [ "$update" = --update ]; then
    mkdir -p "$stored"
    xz -9 -c "$work/$library.abi" > "$stored/$library.abi.xz"
    echo "$library: stored"
  else
    failed=1
  fi
done
[ "$failed" = 0 ] || { echo "The binary interface differs. When that is meant: ./dev abi --update"; exit 1; }
