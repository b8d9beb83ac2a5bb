#!/usr/bin/env bash
# Jobs for all three families of printers and firmware for all three parts, end to end, on a private
# network: what the simulated printers received is compared byte for byte with what was sent.
# Usage: in_private_network.sh all_demo.sh BUILD_FOLDER
set -euo pipefail

[ "${NUV_PRIVATE_NETWORK:-}" = 1 ] || { echo "Run this through ./dev demo --all." >&2; exit 2; }
bin=$(cd "$1/bin" && pwd)
work=$(mktemp -d)
export XDG_CONFIG_HOME=$work XDG_CACHE_HOME=$work  # what nuvctl remembers
simulator=
trap '[ -z "$simulator" ] || kill "$simulator" 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"

say() { printf '\n== %s\n' "$*"; }
run() { printf '$ %s\n' "$*"; "$bin/$1" "${@:2}"; }

# same EXPECTED RECEIVED WHAT
same() {
  cmp "$1" "$2"
  echo "same: $3, $(wc -c < "$2") bytes"
}

# control REQUEST: asks the simulator, fails when it answers with an error.
control() {
  exec 3<> "/dev/tcp/127.0.0.1/$control_port"
  printf '%s\n' "$1" >&3
  local answer
  IFS= read -r answer <&3
  exec 3>&-
  jq -e 'select(.ok)' <<< "$answer"
}

say "Three printers: one of each family"
printers=("Zafel Superfine" "BEGO VARSEO XS" "Fabrix120 xP")
for i in 0 1 2; do
  printf '{"model": "%s", "serial": "DEMO%d", "address": "10.77.1.2", "port": 900%d, "layerMs": 100,
           "drainRate": 200000}\n' "${printers[$i]}" "$i" "$i"
done | jq -s '{printers: .}' > printers.json
"$bin/nuvsim" --config printers.json --control 0 --job-dir jobs > nuvsim.log &
simulator=$!
for _ in $(seq 100); do
  grep -q '^ready' nuvsim.log && break
  kill -0 "$simulator" || exit 1
  sleep 0.1
done
cat nuvsim.log
control_port=$(sed -n 's/^control: 127.0.0.1://p' nuvsim.log)
run nuvctl list

say "What goes into the print files"
for ((i = 0; i < 40; ++i)); do
  printf 'G1 X%d.%03d Y%d.%03d E%d\n' $((i % 120)) $((i * 7 % 1000)) $((i % 68)) $((i * 13 % 1000)) "$i"
done > lines.txt
sed 's/$/\r/' lines.txt > expected.data
# Bytes of every value, the same ones in every run.
bytes() { openssl enc -aes-128-ctr -K "$(printf '%032d' "$2")" -iv "$(printf '%032d' 0)" < /dev/zero 2>/dev/null | head -c "$1" || true; }
bytes 32 1 > key.bin
bytes 300 2 > L101.bin
bytes 20000 3 > L102.bin
bytes 1 4 > L103.bin
{ printf '\x89PNG\r\n\x1a\n'; bytes 25000 5; } > preview.png
wc -c key.bin L10?.bin preview.png

arguments=(--argument layer_thickness_mm=0.05 --argument print_minutes=5)
dental=(--key-file key.bin --l102 L102.bin --l103 L103.bin)
board=(--l101 L101.bin --l102 L102.bin --l103 L103.bin --preview preview.png)
ids=(3DPSNKG53WTW00001 3DPSNKGB3WTW00001 3DPSNKG43WTW00001)
names=("crown.nuv" "dental crown.nuv" "board crown.nuv")
for i in 0 1 2; do
  extra=()
  [ "$i" != 1 ] || extra=("${dental[@]}")
  [ "$i" != 2 ] || extra=("${board[@]}")
  say "${printers[$i]}: sent, and followed until it is printed"
  run nuvfile create --machine-id "${ids[$i]}" "${arguments[@]}" "${extra[@]}" lines.txt "${names[$i]}"
  run nuvctl --serial "DEMO$i" send --watch "${names[$i]}"
  same expected.data "jobs/printer$i-job1.data" "the data lines"
done

# received PRINTER: "kind announced received complete", a line each.
received() {
  control "{\"do\": \"received\", \"printer\": $1}" |
    jq -r '.received[] | "\(.kind) \(.announcedBytes) \(.receivedBytes) \(.complete) \(.started)"'
}

say "Keys, records and thumbnail"
received 0 | cmp - /dev/null
for kind in key L102 L103; do same "$kind.bin" "jobs/printer1-$kind.bin" "$kind of the dental job"; done
diff <(received 1 | cut -d' ' -f1) <(printf '%s\n' key L102 L103)
for kind in L101 L102 L103; do same "$kind.bin" "jobs/printer2-$kind.bin" "$kind of the board's job"; done
same preview.png jobs/printer2-thumbnail.png "the thumbnail"
diff <(received 2 | cut -d' ' -f1) <(printf '%s\n' announcement thumbnail L101 L102 L103)
digest=$(control '{"do": "received", "printer": 2}' | jq -r '.received[0].sha1')
[ "$digest" = "$(sha1sum < "board crown.nuv" | cut -d' ' -f1)" ]
echo "same: the announced digest of the print file, $digest"

say "Firmware for the engine, the Android board and the LCM panel"
bytes 30001 6 > engine.bin
bytes 102330 7 > android.bin
bytes 21504 8 > panel.bin
for kind in engine android panel; do
  run nuvctl --serial DEMO2 firmware --yes "$kind" "$kind.bin"
  same "$kind.bin" "jobs/printer2-$kind.bin" "the image of the $kind"
  received 2 | tail -n 1 | grep -q 'true true$'
done
control '{"do": "received", "printer": 2}' | jq -c '.received[] | select(.kind == "android") | .blocks'

say "An image of the wrong size is refused before anything is sent"
if run nuvctl --serial DEMO2 firmware --yes panel engine.bin; then exit 1; fi
echo
echo "All that was sent arrived byte for byte."
