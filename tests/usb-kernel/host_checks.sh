# One process of a host that keeps the library loaded while printers come and go: what it still
# holds afterwards, and two printers that call themselves the same.
. /lib.sh

# tell LINE: to the host; its answer goes to $answer.
tell() {
  printf '%s\n' "$1" >&"${HOST[1]}"
  read -r -t 60 answer <&"${HOST[0]}"
  echo "$1: $answer"
}
told() { tell "$1" && [ "$answer" = "$2" ]; }

all_eight() {
  tell list && [ "$answer" = "0 USB0001 USB0002 TWIN TWIN USB0005 USB0006 USB0007 USB0008" ]
}
# The list tells them apart by their places only, so both must answer there.
twins() {
  for place in 2 3; do
    told "choose $place" 0 && told state "0 0" || return 1
  done
  # One falls silent: it is the one at the second place.
  fault 3 '"kind": "silent", "code": 102, "count": 3'
  tell state && [ "${answer%% *}" = 1 ] && told "choose 2" 0 && told state "0 0" || return 1
  control '{"do": "clear", "printer": 3}' > /dev/null
}
back_alone() {
  replug 0 1-1 /dev/usb/lp0 && control '{"do": "state", "to": "idle"}' > /dev/null &&
    control '{"do": "clear"}' > /dev/null
}
back_again() { back_alone && all_eight && told "choose 0" 0 && told state "0 0"; }
# out_while LINE PATTERN: the printer goes when a request of the pattern shows that LINE is under way.
out_while() {
  local before
  before=$(control '{"do": "requests"}' | grep -o "$2" | wc -l)
  printf '%s\n' "$1" >&"${HOST[1]}"
  wait_until eval "[ \$(control '{\"do\": \"requests\"}' | grep -o $2 | wc -l) -gt $before ]" || return 1
  unplug 0 /dev/usb/lp0
  read -r -t 60 answer <&"${HOST[0]}"
  echo "$1: $answer"
}
out_while_idle() { unplug 0 /dev/usb/lp0 && tell state && [ "${answer%% *}" = 1 ] && back_again; }
out_in_a_query() {
  fault 0 '"kind": "silent", "code": 102'
  out_while state F102 && [ "${answer%% *}" = 1 ] && back_again
}
out_in_a_job() { out_while "send /tmp/job.nuv" F103 && [ "$answer" = 20 ] && back_again; }
comes_and_goes() {
  tell held
  local held=$answer
  for _ in 1 2 3; do out_while_idle && out_in_a_query && out_in_a_job || return 1; done
  told held "$held"
}
# Waiting busily for one reply alone would take more.
uses_little_processor_time() { tell processor && [ "$answer" -lt 5000 ]; }

requests() { control "{\"do\": \"requests\", \"printer\": $1}" | grep -o "$2" | wc -l; }
found_again_by_the_raw_channel() {
  told "choose 0" 0 && told "raw F102" "F102 OK S:0" || return 1
  unplug 0 /dev/usb/lp0 && told "raw F102" "not opened" || return 1
  replug 0 1-1 /dev/usb/lp0 && told "raw F102" "F102 OK S:0" || return 1
}
# The host is held up, so that it finds the other one there when it looks again.
another_one_in_its_place() {
  unplug 1 /dev/usb/lp1 && told "choose 0" 0 || return 1
  fault 0 '"kind": "buffer-full", "count": -1, "skip": 2'
  local before
  before=$(requests 0 F117)
  printf 'send /tmp/job.nuv\n' >&"${HOST[1]}"
  wait_until eval "[ \$(requests 0 F117) -gt $((before + 3)) ]" || return 1
  kill -STOP "$HOST_PID"
  before=$(requests 1 .)
  unplug 0 /dev/usb/lp0
  replug 1 1-2 /dev/usb/lp0
  kill -CONT "$HOST_PID"
  read -r -t 60 answer <&"${HOST[0]}"
  echo "result $answer, its requests $before, then $(requests 1 .)"
  [ "$answer" = 16 ] || [ "$answer" = 20 ] || return 1
  [ "$(requests 1 .)" = "$before" ] || return 1
  unplug 1 /dev/usb/lp0
  back_alone && replug 1 1-2 /dev/usb/lp1 && all_eight
}
late_for_the_next_program() {
  fault 0 '"kind": "late", "code": 102, "ms": 3500'
  told "choose 0" 0 && told "raw F102" "" && told leave left || return 1
  sleep 1
  timeout 60 nuvctl --usb status --serial USB0001 < /dev/null 2>&1 | tee /dev/stderr | grep -q idle
}
# Of a printer that takes no data, the block stays with the driver until the node is closed.
given_up_is_not_carried_out() {
  local before
  before=$(requests 0 F197)
  told "choose 0" 0 || return 1
  fault 0 '"kind": "nak"'
  told "raw F197" "" || return 1
  control '{"do": "clear"}' > /dev/null
  told "raw F102" "F102 OK S:0" && [ "$(requests 0 F197)" = "$before" ]
}
signals_change_nothing() {
  told "choose 0" 0 && told signals started && told "send /tmp/job.nuv" 0 || return 1
  sed 's/$/\r/' /tmp/lines | cmp - "$(ls -t /tmp/jobs/printer0-job*.data | head -n 1)"
}

for serial in USB0001 USB0002 TWIN TWIN USB0005 USB0006 USB0007 USB0008; do
  printf '{"address": "127.0.0.1", "serial": "%s", "usbId": "11F1:2601"}\n' "$serial"
done | paste -sd, | sed 's/.*/{"printers": [&]}/' > /tmp/printers.json
start_nuvsim --config /tmp/printers.json
for i in 0 1 2 3 4 5 6 7; do attach "1-$((i + 1))" "/dev/usb/lp$i"; done
seq 1 200 | sed 's/.*/G1 X& Y0.125 E3.5/' > /tmp/lines
nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=20 /tmp/lines /tmp/job.nuv > /dev/null
coproc HOST { nuv_scripted_host 2> /tmp/host.err; }
check "a host finds all eight printers" all_eight
check "two with one serial number are two printers" twins
tell "choose 0" > /dev/null
check "pulled out while idle, in a query, in a job, three times: nothing is left held" comes_and_goes
check "nor was there a busy wait" uses_little_processor_time
check "replugged, the raw channel finds it again" found_again_by_the_raw_channel
check "another one on its node in the middle of a job gets nothing" another_one_in_its_place
check "an answer that comes late is not for the next program" late_for_the_next_program
check "a command that was given up is not carried out later" given_up_is_not_carried_out
check "signals neither lose nor double a line of a job" signals_change_nothing
kill "$nuvsim_pid"
wait_until test ! -e /dev/usb/lp0
[ "$failures" = 0 ]
