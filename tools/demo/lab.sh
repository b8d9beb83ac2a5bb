#!/usr/bin/env bash
# A lab: eight simulated printers of different models, each at an address of its own, and a shell beside
# them; or, with arguments, a command. They end with it.
# Usage: in_private_network.sh lab.sh [COMMAND...]   with nuvsim and nuvctl on the PATH
set -euo pipefail

[ "${NUV_PRIVATE_NETWORK:-}" = 1 ] || { echo "Run this through ./dev lab." >&2; exit 2; }
work=$(mktemp -d)
simulator=
trap '[ -z "$simulator" ] || kill "$simulator" 2> /dev/null || true; rm -rf "$work"' EXIT

models=("Zafel Superfine" "Zafel 1.0" "BEGO VARSEO XS" "Moldrix100 xP" "Fabrix100 xP" "Fabrix120 xP" "Fabrix150 xP"
  "Zafel Superfine")
for i in "${!models[@]}"; do
  address=10.77.1.$((i + 10))
  ip address add "$address/24" dev nuv1
  printf '{"model": "%s", "serial": "LAB%04d", "address": "%s", "nickname": "Lab %d", "layerMs": 1000}\n' \
    "${models[$i]}" "$((i + 1))" "$address" "$((i + 1))"
done | jq -s '{printers: .}' > "$work/printers.json"
nuvsim --config "$work/printers.json" --job-dir "$work/jobs" > "$work/nuvsim.log" &
simulator=$!
until grep -q '^ready' "$work/nuvsim.log"; do
  kill -0 "$simulator" || exit 1
  sleep 0.1
done
if [ $# -gt 0 ]; then
  "$@"
else
  jq -r '.printers[] | "\(.address)  \(.serial)  \(.nickname)  \(.model)"' "$work/printers.json"
  echo "Try: nuvctl list, nuvctl status --all. A second terminal: ./dev shell --join. The end: exit."
  bash || true
fi
