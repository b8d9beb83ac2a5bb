#!/usr/bin/env bash
# The tests of the Windows build are those of the Linux build, but for a list of differences with a
# reason for each.
# Usage: run_under_wine.sh compare_tests.sh LINUX_BUILD WINDOWS_BUILD DIFFERENCES
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Reads a listing of GoogleTest: a line for each suite, its tests indented below.
names() {
  tr -d '\r' | sed 's/ *#.*//' |
    awk -v program="$1" '/^Running main/ {next} /^[^ ]/ {suite = $1; next} {print program ":" suite $1}'
}
# list BUILD SUFFIX RUNNER...: all tests of all test programs, and CTest's own names.
list() {
  local build=$1 suffix=$2 program
  shift 2
  ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: /ctest:/p'
  for program in "$build"/bin/*_test"$suffix"; do
    "$@" "$program" --gtest_list_tests | names "$(basename "$program" "$suffix")"
  done
}
list "$1" "" env | sort > "$work/linux"
list "$2" .exe "$here/run_under_wine.sh" | sort > "$work/windows"
{ comm -23 "$work/linux" "$work/windows" | sed 's/^/linux /'; comm -13 "$work/linux" "$work/windows" | sed 's/^/windows /'; } |
  sort > "$work/found"
sed '/^#/d' "$3" | sed 's/ *--.*//' | sort > "$work/listed"
if ! diff "$work/listed" "$work/found" > "$work/diff"; then
  echo "the tests of Linux (<: listed only) and Windows (>: found only) differ otherwise than $3 says:"
  cat "$work/diff"
  exit 1
fi
echo "tests: $(wc -l < "$work/linux") on Linux, $(wc -l < "$work/windows") on Windows; they differ in:"
sed '/^#/d' "$3"
