#!/usr/bin/env bash
# A printer behind a router, which forwards no broadcasts: asked by its address it is found and gets
# its job, through both libraries; behind one that translates addresses, by the router's.
# Usage: router.sh BIN_FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/../system/lib.sh"

# machine NAME: a network of its own, held open by a sleeping process; `on NAME COMMAND...` runs there.
declare -A holds_open
machine() {
  unshare --net sleep 600 &
  holds_open[$1]=$!
  processes+=("$!")
  while [ "$(readlink "/proc/$!/ns/net")" = "$(readlink /proc/self/ns/net)" ]; do sleep 0.05; done
  on "$1" ip link set lo up
}
on() { nsenter --target "${holds_open[$1]}" --net -- "${@:2}"; }

machine router
machine lab
ip link add host type veth peer name near netns "${holds_open[router]}"
on router ip link add far type veth peer name printer netns "${holds_open[lab]}"
ip address add 10.88.1.2/24 broadcast + dev host
ip link set host up
on router ip address add 10.88.1.1/24 broadcast + dev near
on router ip address add 10.88.2.1/24 broadcast + dev far
on router ip link set near up
on router ip link set far up
# The machine's own broadcasts come from its first address, so the simulator has another.
on lab ip address add 10.88.2.9/24 broadcast + dev printer
on lab ip address add 10.88.2.2/24 broadcast + dev printer
on lab ip link set printer up
ip route add default via 10.88.1.1
on lab ip route add default via 10.88.2.1
on router sh -c 'echo 1 > /proc/sys/net/ipv4/ip_forward'
until ip link show host | grep -q LOWER_UP && on router ip link show near | grep -q LOWER_UP &&
  on router ip link show far | grep -q LOWER_UP && on lab ip link show printer | grep -q LOWER_UP; do
  sleep 0.05
done

nsenter --target "${holds_open[lab]}" --net -- "$bin/nuvsim" --address 10.88.2.2 --port 9000 --serial LAB \
  --nickname "behind the router" --job-dir jobs > log &
processes+=("$!")
"$support/wait_for_line.sh" '^ready' log
printf 'G1 X%s\n' 1 2 3 > lines
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines crown.nuv

expect 1 "$bin/find_printers"
expect 0 "$bin/find_printers" 10.88.2.2
grep -q '^10.88.2.2  LAB ' out || wrong "found"
expect 0 env NUVCONNECT_SEARCH="10.88.2.2 broadcast" "$bin/nuvctl" --json list
holds '.[0].printers[0].serial == "LAB"'
expect 0 "$bin/nuvctl" --json --address 10.88.2.2 info
holds '.[0].nickname == "behind the router"'
expect 0 "$bin/nuvctl" printers add far --address 10.88.2.2
expect 0 "$bin/nuvctl" --json --printer far status
expect 0 "$bin/send_with_progress" 10.88.2.2 crown.nuv
same lines jobs

on router sh -c 'echo 0 > /proc/sys/net/ipv4/ip_forward'
nsenter --target "${holds_open[router]}" --net -- "$bin/relay" 10.88.1.1 10.88.2.2 9000 > relayed &
processes+=("$!")
"$support/wait_for_line.sh" '^ready' relayed
expect 1 "$bin/find_printers" 10.88.2.2
expect 0 "$bin/find_printers" 10.88.1.1
grep -q '^10.88.1.1  LAB ' out || wrong "the address that was asked"
expect 0 env NUVCONNECT_SEARCH=10.88.1.1 "$bin/nuvctl" --serial LAB --json status
expect 0 "$bin/nuvctl" --address 10.88.1.1 status
expect 0 "$bin/send_with_progress" 10.88.1.1 crown.nuv
grep -qx 'the printer took it as job 2' out || wrong "the job behind the translation"
same lines jobs
finish "a printer behind a router is found by its address, or by the router's, and printed on"
