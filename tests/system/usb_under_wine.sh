#!/usr/bin/env bash
# The Windows programs and a USB printer that the system's own functions find: list, ask, a job byte
# for byte, plugged out and in again.
# Usage: usb_under_wine.sh BIN_FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# tells EXIT PATTERN NUVCTL_ARGUMENTS...
tells() {
  expect "$1" "$bin/nuvctl" "${@:3}"
  grep -qE -- "$2" out err || wrong "no \"$2\": ${*:3}"
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

start_nuvsim log --address 127.0.0.1 --port 9000 --no-discovery --serial USB0001 --job-dir jobs
tells 3 'No printer' list --usb
plug_in
tells 0 'vid_11f1&pid_2601#usb0001.* USB0001' list --usb
[ "$(grep -c 'vid_' out)" = 1 ] || wrong "an ID that is in no table is listed"
tells 0 'Zafel Superfine' --usb info
tells 0 'F102 OK S:0' --usb raw F102
seq 1 40 | sed 's/.*/G1 X& Y0.125 E3.5/' > lines
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines job.nuv
expect 0 "$bin/nuvctl" --usb send job.nuv
same lines jobs
plug_out
tells 3 'No printer' --usb status
plug_in
tells 0 'print|idle' --usb status
plug_out
finish "the USB printer was found, asked, sent a job and missed when it was gone"
