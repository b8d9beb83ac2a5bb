#!/usr/bin/env bash
# Following a print that fails, a printer that goes away, Ctrl-C in a watch and in a firmware transfer:
# exit codes, what is shown, and what the printer has received.
# NUV_NO_CTRL_C leaves out what Ctrl-C does, for where a script cannot press it.
# Usage: watch_and_firmware.sh BIN_FOLDER
set -euo pipefail

bin=$(cd "$1" && pwd)
support=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)
work=$(mktemp -d)
simulator=
trap '[ -z "$simulator" ] || kill "$simulator" 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"

"$bin/nuvsim" --address 10.77.1.2 --model "Fabrix120 xP" --layer-ms 60000 --control 0 > log &
simulator=$!
"$support/wait_for_line.sh" '^ready' log
control_port=$(tr -d '\r' < log | sed -n 's/^control: 127.0.0.1://p')

control() {
  exec 3<> "/dev/tcp/127.0.0.1/$control_port"
  printf '%s\n' "$1" >&3
  IFS= read -r answer <&3
  exec 3>&-
  jq -e .ok <<< "$answer" > /dev/null
}
failed=0
wrong() { printf 'WRONG: %s\n' "$*"; tail -n 5 out err; failed=1; }
# holds CONDITION: of the last document that nuvctl wrote. (Without -s, some versions of jq take no
# document at all for true.)
holds() { jq -es "last | $1" out > /dev/null; }
# Waits until a file holds a line with the pattern.
await() {
  for _ in $(seq 200); do grep -q "$2" "$1" && return; sleep 0.1; done
  wrong "$1 never held: $2"
}
# start NUVCTL_ARGUMENTS...: in the background, where Ctrl-C would otherwise be ignored.
start() {
  : > out
  : > err
  env --default-signal=INT "$bin/nuvctl" --timeout 200 "$@" > out 2> err &
  host=$!
}
# ends EXIT WHAT
ends() {
  local exit=0
  wait "$host" || exit=$?
  [ "$exit" = "$1" ] || wrong "exit $exit in place of $1: $2"
}

printf 'G1 X1\nG1 X2\nG1 X3\n' > lines.txt
"$bin/nuvfile" create --machine-id 3DPSNKG43WTW00001 lines.txt job.nuv
start --json send --watch job.nuv
await out '"layer":1,'
control '{"do": "state", "to": "error", "number": 17}'
ends 1 "a print that fails"
jq -es 'length == 4 and .[0].result == "accepted" and .[0].job_index == 1 and .[1].layers == 3 and .[2].error_number == 17
        and .[3].error.code == "printer_error"' out > /dev/null || wrong "the lines of a failed print"

control '{"do": "state", "to": "no-error"}'
if [ -z "${NUV_NO_CTRL_C:-}" ]; then
  start watch
  await out '^printing, layer 1 of 3'
  kill -INT "$host"
  ends 130 "Ctrl-C in a watch"
fi
start --json watch
await out '"layer":1,'
control '{"do": "unplug"}'
ends 5 "a printer that goes away"
holds .error.code || wrong "the last line of a lost printer"
control '{"do": "replug"}'
control '{"do": "state", "to": "idle"}'

# The connection ends behind so many bytes of a job's 21 bytes of lines.
# cut_job FAULT BYTES EXIT WANTED WHAT
cut_job() {
  control '{"do": "fault", "fault": {"kind": "'"$1"'", "code": 503, "bytes": '"$2"'}}'
  start --json send job.nuv
  ends "$3" "$5"
  jq -e "$4" out > /dev/null || wrong "$5"
}
cut_job drop-after 21 0 '.result == "accepted" and .bytes == 15 and .job_index == 2' "a cut behind the last byte"
control '{"do": "state", "to": "idle"}'
for fault in drop-after reset-after; do
  cut_job $fault 10 5 '.error.code == "write_failed" and (.error.message | contains("has 8 of 15 bytes"))' \
    "$fault within the data"
  start --json send job.nuv
  ends 1 "a job while a broken one is open"
  start --json raw "F104 S2"
  ends 0 "the broken job is abandoned"
done
control '{"do": "fault", "fault": {"kind": "refuse", "code": 500}}'
start --json send job.nuv
ends 1 "a job that is refused"
jq -e '.error.code == "job_refused"' out > /dev/null || wrong "a job that is refused"
start --json raw "F104 S2"
ends 0 "the job whose refusal was a lie"
start --json send job.nuv
ends 0 "a job after a broken one"
control '{"do": "state", "to": "idle"}'

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
  holds '.error.code == "cancelled" and .bytes < 2000000' || wrong "a cancelled transfer"
  transfers='[[false, false], [false, false], [true, true]]'
fi
control '{"do": "fault", "fault": {"kind": "drop-after", "bytes": 100000}}'
start --json firmware --yes android board.img
ends 5 "a connection that is cut in the middle of an image"
holds '.error.code == "update_unconfirmed" and .result == "not_confirmed"' ||
  wrong "a cut connection"
start --json firmware --yes android board.img
ends 0 "another try"
control '{"do": "received"}'
jq -e --argjson wanted "$transfers" '.received | map([.complete, .started]) | .[-($wanted | length):] == $wanted' \
  <<< "$answer" > /dev/null || wrong "what the printer received: $answer"

[ "$failed" = 0 ] || exit 1
echo "watching and updating end as they should"
