#!/usr/bin/env bash
# Following a print that fails, a printer that goes away, Ctrl-C in a watch and in a firmware transfer:
# exit codes, what is shown, and what the printer has received.
# NUV_NO_CTRL_C leaves out what Ctrl-C does, for where a script cannot press it.
# Usage: watch_and_firmware.sh BIN_FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

start_nuvsim log --address 10.77.1.2 --model "Fabrix120 xP" --layer-ms 60000 --control 0
control_port=$(tr -d '\r' < log | sed -n 's/^control: 127.0.0.1://p')

control() {
  exec 3<> "/dev/tcp/127.0.0.1/$control_port"
  printf '%s\n' "$1" >&3
  IFS= read -r answer <&3
  exec 3>&-
  jq -e .ok <<< "$answer" > /dev/null
}
state() { control "{\"do\": \"state\", \"to\": $1}"; }
fault() { control "{\"do\": \"fault\", \"fault\": {$1}}"; }
# Waits until a file holds a line with the pattern.
await() {
  for _ in $(seq 200); do grep -q "$2" "$1" && return; sleep 0.1; done
  wrong "$1 never held: $2"
}
# start NUVCTL_ARGUMENTS...: in the background, where Ctrl-C would otherwise be ignored.
start() {
  : > out
  env --default-signal=INT "$bin/nuvctl" --address 10.77.1.2 "$@" > out 2> err &
  host=$!
}
# ends EXIT WHAT
ends() {
  local exit=0
  wait "$host" || exit=$?
  [ "$exit" = "$1" ] || wrong "exit $exit in place of $1: $2"
}
nuvctl() { expect "$1" "$bin/nuvctl" --address 10.77.1.2 --json "${@:2}"; }

printf 'G1 X1\nG1 X2\nG1 X3\n' > lines.txt
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG43WTW00001 lines.txt job.nuv
start --json send --watch job.nuv
await out '"layer":1,'
state '"error", "number": 17'
ends 1 "a print that fails"
holds 'length == 4 and .[0].result == "accepted" and .[0].job_index == 1 and .[1].layers == 3
       and .[2].error_number == 17 and .[3].error.code == "printer_error"'

state '"no-error"'
if [ -z "${NUV_NO_CTRL_C:-}" ]; then
  start watch
  await out '^printing job.nuv, layer 1 of 3'
  kill -INT "$host"
  ends 130 "Ctrl-C in a watch"
fi
start --json watch --give-up 0
await out '"layer":1,'
control '{"do": "unplug"}'
ends 5 "a printer that goes away"
holds 'last | .error.code'
control '{"do": "replug"}'
state '"idle"'

# The connection ends behind so many bytes of a job's 21 bytes of lines.
cut_after() { fault "\"kind\": \"$1\", \"code\": 503, \"bytes\": $2"; }
cut_after drop-after 21
nuvctl 0 send job.nuv
holds '.[0] | .result == "accepted" and .bytes == 15 and .job_index == 2'
state '"idle"'
for kind in drop-after reset-after; do
  cut_after $kind 10
  nuvctl 5 send job.nuv
  holds '.[0].error | .code == "connection_lost" and (.message | contains("has 8 of 15 bytes"))'
  nuvctl 1 send job.nuv  # while the broken one is open
  nuvctl 0 cancel --yes
done
fault '"kind": "refuse", "code": 500'
nuvctl 1 send job.nuv
holds '.[0].error.code == "job_refused"'
nuvctl 0 raw "F104 S2"  # the refusal was a lie
nuvctl 0 send job.nuv
state '"idle"'

head -c 2000000 /dev/zero > board.img
transfers='[[false, false], [true, true]]'
if [ -z "${NUV_NO_CTRL_C:-}" ]; then
  start --json firmware --yes android board.img
  for _ in $(seq 200); do
    control '{"do": "received"}'
    jq -e '.received[-1] | .announcedBytes == 2000000 and .receivedBytes > 100000' <<< "$answer" > /dev/null && break
    sleep 0.1
  done
  kill -INT "$host"
  ends 130 "Ctrl-C in a firmware transfer"
  holds 'last | .error.code == "cancelled" and .bytes < 2000000'
  transfers='[[false, false], [false, false], [true, true]]'
fi
fault '"kind": "drop-after", "bytes": 100000'
nuvctl 5 firmware --yes android board.img
holds '.[0] | .error.code == "update_unconfirmed" and .result == "not_confirmed"'
nuvctl 0 firmware --yes android board.img
control '{"do": "received"}'
jq -e --argjson wanted "$transfers" '.received | map([.complete, .started]) | .[-($wanted | length):] == $wanted' \
  <<< "$answer" > /dev/null || wrong "what the printer received: $answer"
finish "watching and updating end as they should"
