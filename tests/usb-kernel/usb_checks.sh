# The library over the kernel's driver: through nuvctl, and in one process of a host that keeps it loaded
# while printers come and go, of which two call themselves the same.
. /lib.sh

# exits STATUS COMMAND...; tells PATTERN COMMAND...
exits() {
  local status=0
  # busybox's timeout leaves a watcher behind for a second, which must not hold the printer open.
  timeout 60 "${@:2}" < /dev/null > /tmp/out 2>&1 3>&- || status=$?
  cat /tmp/out
  [ "$status" = "$1" ]
}
tells() { exits 0 "${@:2}" && grep -qE -- "$1" /tmp/out; }
identity() {
  local device
  device=$(readlink -f /sys/class/usbmisc/lp0/device/..)
  cat "$device"/{idVendor,idProduct,serial,speed} | paste -s -d , | tee /dev/stderr | grep -qx 11f1,2601,USB0001,480
}
# The last printer's ID is in no table, so it is left alone.
lists() {
  [ -c /dev/usb/lp4 ] && tells '/dev/usb/lp0 +USB0001' nuvctl list --usb &&
    grep -qE '/dev/usb/lp1 +USB0002' /tmp/out && [ "$(grep -c /dev/usb /tmp/out)" = 4 ]
}
arrived() { sed 's/$/\r/' /tmp/lines | cmp - "$(ls -t /tmp/jobs/printer0-job*.data | head -n 1)"; }
sends() { exits 0 nuvctl --usb send /tmp/job.nuv --serial USB0001 && arrived; }
# Pulled out in the middle of the data and put in again, the printer still waits for the rest.
sends_again() {
  local wanted sender
  wanted=$(($(requests 0 F117) + 5))
  nuvctl --usb send --retry 1 /tmp/job.nuv --serial USB0001 < /dev/null > /tmp/out 2>&1 3>&- &
  sender=$!
  wait_until eval "[ \$(requests 0 F117) -ge $wanted ]"
  unplug 0 /dev/usb/lp0 && sleep 1 && replug 0 1-1 /dev/usb/lp0 && wait "$sender"
  cat /tmp/out
  grep -q 'once more' /tmp/out && arrived
}

# tell LINE: to the host; its answer goes to $answer.
say() { printf '%s\n' "$1" >&"${HOST[1]}"; }
hear() { read -r -t 60 answer <&"${HOST[0]}"; echo "answer: $answer"; }
tell() { say "$1" && hear; }
told() { tell "$1" && [ "$answer" = "$2" ]; }
finds_all() { told list "0 USB0001 USB0002 TWIN TWIN"; }
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
back_again() { back_alone && finds_all && told "choose 0" 0 && told state "0 0"; }
requests() { control "{\"do\": \"requests\", \"printer\": $1}" | grep -o "$2" | wc -l; }
# begin LINE REQUEST COUNT: until so many more of the request show that LINE is under way.
begin() {
  local wanted=$(($(requests 0 "$2") + $3))
  say "$1" && wait_until eval "[ \$(requests 0 $2) -ge $wanted ]"
}
out_while() { begin "$1" "$2" 1 && unplug 0 /dev/usb/lp0 && hear; }
out_while_idle() { unplug 0 /dev/usb/lp0 && tell state && [ "${answer%% *}" = 1 ] && back_again; }
out_in_a_query() {
  fault 0 '"kind": "silent", "code": 102'
  out_while state F102 && [ "${answer%% *}" = 1 ] && back_again
}
out_in_a_job() { out_while "send /tmp/job.nuv" F103 && [ "$answer" = 20 ] && back_again; }
comes_and_goes() {
  local before
  before=$(held)
  for _ in 1 2 3; do out_while_idle && out_in_a_query && out_in_a_job || return 1; done
  echo "handles and threads: $before, then $(held)"
  [ "$(held)" = "$before" ]
}
held() { ls "/proc/$HOST_PID/fd" | wc -l; ls "/proc/$HOST_PID/task" | wc -l; }
# In hundredths of a second; waiting busily for one reply alone would take more.
uses_little_processor_time() { awk '{print $14 + $15; exit !($14 + $15 < 500)}' "/proc/$HOST_PID/stat"; }

found_again_by_the_raw_channel() {
  told "choose 0" 0 && told "raw F102" "F102 OK S:0" || return 1
  unplug 0 /dev/usb/lp0 && told "raw F102" "not opened" || return 1
  replug 0 1-1 /dev/usb/lp0 && told "raw F102" "F102 OK S:0" || return 1
}
# The host is held up, so that it finds the other one there when it looks again.
another_one_in_its_place() {
  unplug 1 /dev/usb/lp1 && told "choose 0" 0 || return 1
  fault 0 '"kind": "buffer-full", "count": -1, "skip": 2'
  begin "send /tmp/job.nuv" F117 4 || return 1
  kill -STOP "$HOST_PID"
  local before
  before=$(requests 1 .)
  unplug 0 /dev/usb/lp0
  replug 1 1-2 /dev/usb/lp0
  kill -CONT "$HOST_PID"
  hear
  [ "$answer" = 16 ] || [ "$answer" = 20 ] || return 1
  [ "$(requests 1 .)" = "$before" ] || return 1
  unplug 1 /dev/usb/lp0
  back_alone && replug 1 1-2 /dev/usb/lp1 && finds_all
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
  told "choose 0" 0 && told signals started && told "send /tmp/job.nuv" 0 && arrived
}

cat > /tmp/printers.json <<'JSON'
{"printers": [
  {"address": "127.0.0.1", "serial": "USB0001", "usbId": "11F1:2601"},
  {"address": "127.0.0.1", "serial": "USB0002", "usbId": "0999:BEAF"},
  {"address": "127.0.0.1", "serial": "TWIN", "usbId": "11F1:2601"},
  {"address": "127.0.0.1", "serial": "TWIN", "usbId": "11F1:2601"},
  {"address": "127.0.0.1", "serial": "USB0005", "usbId": "11F1:2605"}]}
JSON
start_nuvsim --config /tmp/printers.json
for i in 0 1 2 3 4; do attach "1-$((i + 1))" "/dev/usb/lp$i"; done
seq 1 200 | sed 's/.*/G1 X& Y0.125 E3.5/' > /tmp/lines
nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=20 /tmp/lines /tmp/job.nuv > /dev/null

echo "--- nuvctl"
check "the kernel knows its IDs, serial number and speed" identity
check "the list shows the printers, and not the one with an unlisted ID" lists
fault 0 '"kind": "zero-packet", "code": 102'
check "an empty packet ahead of the answer does not matter" tells 'F102 OK S:0' nuvctl --usb raw F102 --serial USB0001
fault 0 '"kind": "pieces", "code": 197, "bytes": 7, "ms": 20'
check "an answer in pieces is put together" tells 'Simulated printer' nuvctl --usb info --serial USB0001
check "a job arrives byte for byte" sends
control '{"do": "state", "to": "idle"}' > /dev/null
check "one that was lost is sent again to the printer that is back" sends_again
control '{"do": "state", "to": "idle"}' > /dev/null
unplug 0 /dev/usb/lp0
check "pulled out it is not there" exits 3 nuvctl --usb status --serial USB0001
check "the other one goes on" tells USB0002 nuvctl --usb info --serial USB0002
back_alone
exec 3<> /dev/usb/lp0
check "one that another program has open is a row" tells "/dev/usb/lp0 +- +busy" nuvctl list --usb
exec 3>&-

echo "--- host"
coproc HOST { nuv_scripted_host 2> /tmp/host.err; }
check "it finds them all" finds_all
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
check "a simulator that ends takes its printers along" wait_until test ! -e /dev/usb/lp0
[ "$failures" = 0 ]
