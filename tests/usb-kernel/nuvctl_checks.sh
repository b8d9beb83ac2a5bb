# The library over the kernel's driver, through nuvctl: find, ask, send, and what the user sees when
# the printer is pulled out.
. /lib.sh

# exits STATUS COMMAND...: and uses little processor time, so nothing waits busily.
exits() {
  local wanted=$1 status=0
  shift
  TIMEFORMAT='processor seconds %U %S'
  # busybox's timeout leaves a watcher behind for a second, which must not hold the printer open.
  { time timeout 60 "$@" < /dev/null > /tmp/out 2>&1 3>&- || status=$?; } 2> /tmp/time
  cat /tmp/out /tmp/time
  [ "$status" = "$wanted" ] || { echo "exit status $status in place of $wanted"; return 1; }
  awk '/^processor/ {exit !($3 + $4 < 3)}' /tmp/time
}
tells() { exits 0 "${@:2}" && grep -qE -- "$1" /tmp/out; }

identity() {
  local device
  device=$(readlink -f /sys/class/usbmisc/lp0/device/..)
  cat "$device"/{idVendor,idProduct,serial,speed} | paste -s -d , | tee /dev/stderr | grep -qx 11f1,2601,USB0001,480
}
lists_both() {
  tells '/dev/usb/lp0 +USB0001' nuvctl list --usb --debug || return 1
  grep -qE '/dev/usb/lp1 +USB0002' /tmp/out && [ "$(grep -c /dev/usb /tmp/out)" = 2 ]
}
# The third printer's ID is in no table, so it is left alone.
leaves_the_unlisted() { [ -c /dev/usb/lp2 ] && lists_both; }

sends() {
  seq 1 60 | sed 's/.*/G1 X& Y0.125 E3.5/' > /tmp/lines
  nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=20 /tmp/lines /tmp/job.nuv &&
    exits 0 nuvctl --usb send /tmp/job.nuv --serial USB0001 || return 1
  sed 's/$/\r/' /tmp/lines | cmp - "$(find /tmp/jobs -name 'printer0-job*.data' -size +0 | sort | tail -n 1)"
}

replugged() {
  replug 0 1-1 /dev/usb/lp0 && control '{"do": "state", "to": "idle"}' > /dev/null &&
    control '{"do": "clear"}' > /dev/null && tells idle nuvctl --usb status --serial USB0001
}

cat > /tmp/printers.json <<'JSON'
{"printers": [
  {"address": "127.0.0.1", "serial": "USB0001", "usbId": "11F1:2601"},
  {"address": "127.0.0.1", "serial": "USB0002", "usbId": "0999:BEAF"},
  {"address": "127.0.0.1", "serial": "USB0003", "usbId": "11F1:2605"}]}
JSON
start_nuvsim --config /tmp/printers.json
for i in 0 1 2; do attach "1-$((i + 1))" "/dev/usb/lp$i"; done
check "the kernel knows its IDs, serial number and speed" identity
check "the list shows both printers, and not the one with an unlisted ID" leaves_the_unlisted
check "who it is" tells 'Zafel Superfine' nuvctl --usb info --serial USB0001
check "how it is" tells 'idle' nuvctl --usb status --serial USB0001
check "a raw command" tells 'F102 OK S:0' nuvctl --usb raw F102 --serial USB0001
fault 0 '"kind": "zero-packet", "code": 102'
check "an empty packet ahead of the answer does not matter" tells 'F102 OK S:0' nuvctl --usb raw F102 --serial USB0001
fault 0 '"kind": "pieces", "code": 197, "bytes": 7, "ms": 20'
check "an answer in pieces is put together" tells 'Simulated printer' nuvctl --usb info --serial USB0001
check "a job arrives byte for byte" sends
control '{"do": "state", "to": "idle"}' > /dev/null
unplug 0 /dev/usb/lp0
check "pulled out it is not there" exits 3 nuvctl --usb status --serial USB0001
check "the other one goes on" tells USB0002 nuvctl --usb info --serial USB0002
check "replugged, it goes on" replugged
check "and takes a job" sends
exec 3<> /dev/usb/lp0
check "one that another program has open ends the list" exits 5 nuvctl list --usb
exec 3>&-
check "the list is whole afterwards" lists_both
kill "$nuvsim_pid"
check "a simulator that ends takes its printer along" wait_until test ! -e /dev/usb/lp0
[ "$failures" = 0 ]
