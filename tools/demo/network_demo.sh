#!/usr/bin/env bash
# The main job, end to end, on a private network: a simulated printer is found by broadcast,
# connected, asked who it is and how it is, and sent a print job; then the bytes that it received
# are compared with the bytes of the print file.
# Usage: in_private_network.sh network_demo.sh BUILD_FOLDER
set -euo pipefail

[ "${NUV_PRIVATE_NETWORK:-}" = 1 ] || { echo "Run this through ./dev demo." >&2; exit 2; }
bin=$(cd "$1/bin" && pwd)
work=$(mktemp -d)
export XDG_CONFIG_HOME=$work XDG_CACHE_HOME=$work  # what nuvctl remembers
simulator=
trap '[ -z "$simulator" ] || kill "$simulator" 2>/dev/null || true; rm -rf "$work"' EXIT

say() { printf '\n== %s\n' "$*"; }
run() { printf '$ %s\n' "$*"; "$bin/$1" "${@:2}"; }

say "A simulated printer with a receive buffer of 64 KiB"
"$bin/nuvsim" --address 10.77.1.2 --model "Zafel Superfine" --serial ZSF0001 --name "Demo" \
  --nickname "Demo printer" --buffer 65536 --drain-rate 200000 --layer-ms 1000 \
  --job-dir "$work/jobs" > "$work/nuvsim.log" &
simulator=$!
for _ in $(seq 100); do
  grep -q '^ready' "$work/nuvsim.log" && break
  kill -0 "$simulator" || exit 1
  sleep 0.1
done
cat "$work/nuvsim.log"

say "Found by broadcast"
run nuvctl list
say "Who it is, and how it is"
run nuvctl --serial ZSF0001 info
run nuvctl --serial ZSF0001 status

say "A print file of 300 lines"
for ((i = 0; i < 300; ++i)); do
  printf 'G1 X%d.%03d Y%d.%03d E%d\n' $((i % 120)) $((i * 7 % 1000)) $((i % 68)) $((i * 13 % 1000)) "$i"
done > "$work/lines.txt"
run nuvfile create --machine-id 3DPSNKG53WTW00001 --argument layers=300 \
  --argument layer_thickness_mm=0.05 --argument print_minutes=5 "$work/lines.txt" "$work/job.nuv"
run nuvfile info "$work/job.nuv"

say "Sent, 100 ms a line"
run nuvctl --serial ZSF0001 send "$work/job.nuv"
run nuvctl --serial ZSF0001 status

say "Received, byte for byte?"
received=$(find "$work/jobs" -type f -size +0 | head -n 1)
sed 's/$/\r/' "$work/lines.txt" > "$work/expected"
cmp "$work/expected" "$received"
echo "yes: $(wc -c < "$received") bytes in $(wc -l < "$received") lines"
