#!/usr/bin/env bash
# The Windows programs and a USB printer that the system's own functions find: list, ask, a job byte
# for byte, plugged out and in again.
# Usage: usb_under_wine.sh BIN_FOLDER
set -euo pipefail

bin=$(cd "$1" && pwd)
support=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)
work=$(mktemp -d)
simulator= bridge=
trap 'exec 4>&-; [ -z "$simulator" ] || kill "$simulator" 2> /dev/null || true; rm -rf "$work"' EXIT
cd "$work"

failed=0
wrong() { printf 'WRONG: %s\n' "$*"; cat out; failed=1; }
# expect EXIT PATTERN COMMAND...
expect() {
  local exit=0
  "${@:3}" > out 2>&1 || exit=$?
  [ "$exit" = "$1" ] || wrong "exit $exit in place of $1: ${*:3}"
  grep -qE -- "$2" out || wrong "no \"$2\": ${*:3}"
}
# The printers stay plugged in as long as the pipe to the bridge is open.
plug_in() {
  mkfifo bridge.in
  "$bin/usb_bridge" 9000 'VID_11F1&PID_2605' ODD 'vid_11f1&pid_2601' USB0001 < bridge.in > bridge.out &
  bridge=$!
  exec 4> bridge.in
  "$support/wait_for_line.sh" attached bridge.out
}
plug_out() {
  exec 4>&-
  wait "$bridge"
  rm bridge.in
}

"$bin/nuvsim" --address 127.0.0.1 --port 9000 --no-discovery --serial USB0001 --job-dir jobs > log &
simulator=$!
"$support/wait_for_line.sh" '^ready' log

expect 3 'No printer' "$bin/nuvctl" list --usb
plug_in
expect 0 'vid_11f1&pid_2601#usb0001.* USB0001' "$bin/nuvctl" list --usb
[ "$(grep -c 'vid_' out)" = 1 ] || wrong "an ID that is in no table is listed"
expect 0 'Zafel Superfine' "$bin/nuvctl" --usb info
expect 0 'F102 OK S:0' "$bin/nuvctl" --usb raw F102
seq 1 40 | sed 's/.*/G1 X& Y0.125 E3.5/' > lines
"$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines job.nuv > out
expect 0 '' "$bin/nuvctl" --usb send job.nuv
sed 's/$/\r/' lines | cmp - "$(find jobs -type f -size +0 | head -n 1)" || wrong "the job differs"
plug_out
expect 3 'No printer' "$bin/nuvctl" --usb status
plug_in
expect 0 'print|idle' "$bin/nuvctl" --usb status
plug_out
[ "$failed" = 0 ] || exit 1
echo "the USB printer was found, asked, sent a job and missed when it was gone"
