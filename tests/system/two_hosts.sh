#!/usr/bin/env bash
# Printers on other machines: each network of the host is a veth pair whose far end lies in a network
# namespace of its own, with a simulator in it. Both networks are searched at once, and each printer
# gets a job that must arrive byte for byte.
# Usage: two_hosts.sh BIN_FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

for net in 1 2; do
  # A sleeping process holds the far machine's network open.
  unshare --net sleep 600 &
  machine=$!
  processes+=("$machine")
  while [ "$(readlink /proc/$machine/ns/net)" = "$(readlink /proc/self/ns/net)" ]; do sleep 0.05; done
  far() { nsenter --target "$machine" --net -- "$@"; }
  ip link add "near$net" type veth peer name far netns "$machine"
  ip address add "10.77.$net.1/24" broadcast + dev "near$net"
  ip link set "near$net" up
  far ip address add "10.77.$net.2/24" broadcast + dev far
  far ip link set lo up
  far ip link set far up
  until far ip link show far | grep -q LOWER_UP; do sleep 0.05; done
  nsenter --target "$machine" --net -- "$bin/nuvsim" --serial "PRINTER$net" --name "Far$net" --job-dir "jobs$net" \
    > "log$net" &
  processes+=("$!")
done
for net in 1 2; do
  "$support/wait_for_line.sh" '^ready' "log$net"
done

expect 0 "$bin/nuvctl" --timeout 2000 --json list
holds '.[0].printers | map(.serial) | sort == ["PRINTER1", "PRINTER2"]'
for net in 1 2; do
  seq -f "line %g of network $net" 1 8 > lines
  expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG13WTW00001 lines job.nuv
  expect 0 "$bin/nuvctl" --serial "PRINTER$net" send job.nuv
  same lines "jobs$net"
done
expect 0 "$bin/nuvctl" --timeout 1000 doctor
NUVFILE_LIBRARY=$work/none expect 6 "$bin/nuvctl" --timeout 1000 doctor
grep -q 'problem  NuvFile' out || wrong "a library that is missing"
finish "both jobs arrived byte for byte"
