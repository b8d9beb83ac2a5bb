#!/usr/bin/env bash
# Waits until a program that was started has written a line with the pattern; ends in 1, with what it
# wrote, when a minute has passed.
# Usage: wait_for_line.sh PATTERN FILE
set -euo pipefail
for _ in $(seq 600); do
  if grep -q -- "$1" "$2" 2> /dev/null; then exit; fi
  sleep 0.1
done
echo "no line \"$1\" after a minute:" >&2
cat "$2" >&2
exit 1
