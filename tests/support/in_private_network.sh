#!/usr/bin/env bash
# Runs a command inside a private network: own interfaces, own host name, own hosts file.
#
# Searching for printers broadcasts, so nothing that searches may run on the machine's real network.
# The private one has two networks, as a lab with two of them has; the host end of each is nuv0 and
# nuv2, the far ends are addresses of the same machine, where the simulator answers:
#   nuv0 10.77.1.1/24 <-> nuv1 10.77.1.2/24      nuv2 10.77.2.1/24 <-> nuv3 10.77.2.2/24
# (NUV_NETWORKS: which of them, or "none").
# The host's name resolves to the host ends of both networks (NUV_HOSTS overrides the hosts file).
set -euo pipefail

if [ "${NUV_PRIVATE_NETWORK:-}" != 1 ]; then
  flags=(--net --mount --uts)
  [ "$(id -u)" = 0 ] || flags+=(--user --map-root-user)
  export NUV_PRIVATE_NETWORK=1
  exec unshare "${flags[@]}" -- "$0" "$@"
fi

hosts=$(mktemp)
printf '%b' "${NUV_HOSTS:-127.0.0.1 localhost\n10.77.1.1 nuvhost\n10.77.2.1 nuvhost\n}" > "$hosts"
[ -e /etc/hosts ] || touch /etc/hosts  # the smallest systems come without
mount --bind "$hosts" /etc/hosts
rm -f "$hosts"
hostname nuvhost
ip link set lo up
pair=0
[ "${NUV_NETWORKS:-}" = none ] && networks=() || networks=(${NUV_NETWORKS:-1 2})
for net in "${networks[@]}"; do
  near=nuv$pair far=nuv$((pair + 1))
  ip link add "$near" type veth peer name "$far"
  ip address add "10.77.$net.1/24" broadcast + dev "$near"
  ip address add "10.77.$net.2/24" broadcast + dev "$far"
  ip link set "$near" up
  ip link set "$far" up
  until ip link show "$near" | grep -q 'state UP'; do sleep 0.01; done
  pair=$((pair + 2))
done
exec "$@"
