# The virtual printer under the kernel's driver, with nothing of the library: what a plain program
# reads and writes on the device node.
. /lib.sh

# ask COMMAND: on descriptor 3; prints the answer.
ask() {
  local answer
  printf '%s\r\n' "$1" >&3
  read -r -t 10 answer <&3
  printf '%s\n' "${answer%$'\r'}"
}
answers() { [ "$(ask "$1" | tee /dev/stderr)" = "$2" ]; }
read_lengths() { for _ in $(seq "$1"); do timeout 10 dd bs=512 count=1 <&3 2>/dev/null | wc -c; done | paste -s -d ,; }

identity() {
  local device
  device=$(readlink -f /sys/class/usbmisc/lp0/device/..)
  cat "$device"/{idVendor,idProduct,serial,speed} | paste -s -d , | tee /dev/stderr | grep -qx 11f1,2620,USB0001,480
}
empty_packet() {
  fault 0 '"kind": "zero-packet"'
  printf 'F102\r\n' >&3
  [ "$(read_lengths 2 | tee /dev/stderr)" = 0,13 ]
}
pieces() {
  fault 0 '"kind": "pieces", "bytes": 5, "ms": 0'
  printf 'F102\r\n' >&3
  [ "$(read_lengths 3 | tee /dev/stderr)" = 5,5,3 ]
}
nak() {
  fault 0 '"kind": "nak"'
  ask F102 > /tmp/nak.answer &
  local asking=$!
  wait_until eval "control '{\"do\": \"status\"}' | grep -q '\"faultsApplied\":[3-9]'" || return 1
  [ ! -s /tmp/nak.answer ] || return 1
  control '{"do": "clear"}' > /dev/null
  wait "$asking"
  grep -qx 'F102 OK S:0' /tmp/nak.answer
}
job() {
  seq 1 4000 | sed 's/.*/G1 X& Y0.125 E3.5\r/' > /tmp/lines
  local bytes
  bytes=$(($(wc -c < /tmp/lines) - 2 * 4000))
  answers "F103 S$bytes L3 T0.05 R1 V1 C4 E30 H5 Y1 U2 P80" "F103 OK" || return 1
  cat /tmp/lines >&3
  answers F117 "F117 OK S:65536" || return 1
  cmp /tmp/lines "$(find /tmp/jobs -name 'printer0-job1.data')"
}
second_open_is_busy() { (exec 4<> /dev/usb/lp0) 2>&1 | tee /dev/stderr | grep -q 'busy'; }
# A plain read while the printer is pulled out ends with an error.
unplug_while_reading() {
  (timeout 10 dd bs=512 count=1 <&3 2>&1; echo "status $?") > /tmp/read.log &
  local reading=$!
  sleep 0.2
  unplug 0 /dev/usb/lp0 || return 1
  wait "$reading"
  cat /tmp/read.log
  grep -q 'status 1' /tmp/read.log
}

start_nuvsim --address 127.0.0.1 --usb-id 11F1:2620 --serial USB0001 --drain-rate 1000000000
check "the stock tool attaches the printer, usblp makes the node" attach 1-1 /dev/usb/lp0
check "the kernel knows its IDs, serial number and speed" identity
exec 3<> /dev/usb/lp0
check "a query" answers F102 "F102 OK S:0"
check "a second program finds it busy" second_open_is_busy
check "an empty packet reads as 0 bytes, the answer follows" empty_packet
check "an answer in pieces comes as so many reads" pieces
check "a printer that takes no data holds the writer until it does" nak
check "a job of 4000 lines arrives byte for byte" job
check "unplugging ends a read that waits" unplug_while_reading
exec 3>&-
check "after replugging it is attached again" replug 0 1-1 /dev/usb/lp0
exec 3<> /dev/usb/lp0
check "and answers" answers F197 "F197 OK N:Simulated printer"
exec 3>&-
kill "$nuvsim_pid"
check "a simulator that ends takes its printer along" wait_until test ! -e /dev/usb/lp0
[ "$failures" = 0 ]
