# The main job, end to end, over USB: a virtual printer is plugged in, found, asked who it is and how
# it is, and sent a print job; then the bytes that it received are compared with those of the file.
# Runs in the virtual machine of tests/usb-kernel/boot.sh, which ./dev demo --usb starts.
. /lib.sh
set -euo pipefail

say() { printf '\n== %s\n' "$*"; }
run() { printf '$ %s\n' "$*"; "$@"; }

say "A simulated USB printer with a receive buffer of 64 KiB, plugged in by the kernel's own tool"
start_nuvsim --address 127.0.0.1 --model "Zafel Superfine" --serial ZSF0001 --name "Demo" \
  --nickname "Demo printer" --buffer 65536 --drain-rate 200000 --layer-ms 1000
attach 1-1 /dev/usb/lp0
run usbip port 2> /dev/null
run ls -l /dev/usb/lp0

say "Found on USB"
run nuvctl list --usb
say "Who it is, and how it is"
run nuvctl --usb info
run nuvctl --usb status

say "A print file of 80 lines"
for ((i = 0; i < 80; ++i)); do
  printf 'G1 X%d.%03d Y%d.%03d E%d\n' $((i % 120)) $((i * 7 % 1000)) $((i % 68)) $((i * 13 % 1000)) "$i"
done > /tmp/lines.txt
run nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=80 \
  --argument layer_thickness_mm=0.05 --argument print_minutes=2 /tmp/lines.txt /tmp/job.nuv

say "Sent, 100 ms a line"
run nuvctl --usb send /tmp/job.nuv 2>&1 | cat  # plain lines, no bar
run nuvctl --usb status

say "Received, byte for byte?"
received=$(find /tmp/jobs -type f -size +0 | head -n 1)
sed 's/$/\r/' /tmp/lines.txt > /tmp/expected
cmp /tmp/expected "$received"
echo "yes: $(wc -c < "$received") bytes in $(wc -l < "$received") lines"
