# The figures over USB. Runs in the virtual machine of tests/usb-kernel/boot.sh, which
# ./dev bench --usb starts.
. /lib.sh
set -euo pipefail

for i in 1 2 3 4 5 6 7 8; do
  printf '{"address": "127.0.0.1", "serial": "USB%04d", "usbId": "11F1:2601", "layerMs": 1000}\n' "$i"
done | paste -sd, | sed 's/.*/{"printers": [&]}/' > /tmp/printers.json
start_nuvsim --config /tmp/printers.json
for i in 0 1 2 3 4 5 6 7; do attach "1-$((i + 1))" "/dev/usb/lp$i"; done

seq 1 60 | sed 's/.*/G1 X& Y0.125 E3.5/' > /tmp/lines
nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=20 /tmp/lines /tmp/job.nuv > /dev/null
echo "Eight virtual USB printers, kernel $(uname -r) in a virtual machine"
nuv_usb_bench /tmp/job.nuv
