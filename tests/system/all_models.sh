#!/usr/bin/env bash
# Every query of nuvctl against every model: answered by the models that docs/protocol.md says have
# it, refused by the others, and always with one JSON document on standard output. Then settings: what
# is set is what is read.
# Usage: all_models.sh BIN_FOLDER PROTOCOL_PAGE
set -euo pipefail

bin=$(cd "$1" && pwd)
support=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)
work=$(mktemp -d)
simulator=
trap '[ -z "$simulator" ] || kill "$simulator" 2>/dev/null || true; rm -rf "$work"' EXIT

# The page's table of models: name, then an x under each feature; the features are its heads.
awk -F' *[|] *' '/^\| (Model|`)/ && NF > 12 {gsub("`", "", $2); printf "%s|", $2; for (i = 6; i < NF; ++i) printf "%s|", $i; print ""}' \
  "$2" > "$work/table"
IFS='|' read -r _ heads < "$work/table"
IFS='|' read -ra features <<< "$heads"
sed 1d "$work/table" > "$work/models"
[ "$(wc -l < "$work/models")" -ge 11 ] || { echo "the page's table of models has changed its form"; exit 1; }

# Command, and the feature that it needs (-: none). All but those that are no queries.
cat > "$work/commands" <<'ROWS'
info|-
status|-
resin|-
versions|-
nickname|-
z-compensation|-
scaling|-
sensors|sensors
tank|sensors
sensors --laser 1|LSU
jobs|history
laser-power|laser
skip-warmup|laser
wifi list|wireless
wifi status|wireless
leds|LED
ROWS

serial() { printf 'MODEL%s' "$1"; }
number=0
while IFS='|' read -r name _; do
  printf '{"model": "%s", "serial": "%s", "address": "10.77.1.2"}\n' "$name" "$(serial $number)"
  number=$((number + 1))
done < "$work/models" | jq -s '{printers: .}' > "$work/printers.json"
"$bin/nuvsim" --config "$work/printers.json" > "$work/log" &
simulator=$!
"$support/wait_for_line.sh" '^ready' "$work/log"

ask() { "$bin/nuvctl" --json --timeout "$@" 2> "$work/err" > "$work/out"; }
# On a busy machine the printers may answer a short search too late.
nuvctl() {
  local exit=0
  ask 100 "$@" || exit=$?
  [ "$exit" = 3 ] || return "$exit"
  ask 2000 "$@"
}
failed=0
wrong() { printf 'WRONG: %s\n' "$*"; cat "$work/out" "$work/err"; failed=1; }

# expect EXIT NUVCTL_ARGUMENTS...
expect() {
  local exit=0
  nuvctl "${@:2}" || exit=$?
  [ "$exit" = "$1" ] || wrong "exit $exit in place of $1: ${*:2}"
  jq -es 'length == 1' "$work/out" > /dev/null || wrong "not one JSON document: ${*:2}"
}
# expect_value JQ_FILTER VALUE NUVCTL_ARGUMENTS...
expect_value() {
  expect 0 "${@:3}"
  local value
  value=$(jq -r "$1" "$work/out")
  [ "$value" = "$2" ] || wrong "$1 is '$value' in place of '$2': ${*:3}"
}

for command in $("$bin/nuvctl" --help | tr -d '\r' | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z-]*\) .*/\1/p'); do
  case $command in list | send | watch | firmware | gcode | raw) continue ;; esac
  grep -q "^$command[ |]" "$work/commands" || { echo "WRONG: $0 has no row of $command"; failed=1; }
done

number=0
while IFS='|' read -r name marks; do
  IFS='|' read -ra has <<< "$marks"
  while IFS='|' read -r command feature; do
    exit=1
    [ "$feature" != - ] || exit=0
    for i in "${!features[@]}"; do
      [ "${features[$i]} ${has[$i]:-}" != "$feature x" ] || exit=0
    done
    # shellcheck disable=SC2086
    expect $exit --serial "$(serial $number)" $command
  done < "$work/commands"
  number=$((number + 1))
done < "$work/models"

one=$(serial 7)  # a Fabrix150: it has all settings
expect_value .nickname 'Büro: <2> = x' --serial "$one" nickname 'Büro: <2> = x'
expect_value .nickname 'Büro: <2> = x' --serial "$one" nickname
expect_value .z_compensation_um -20 --serial "$one" z-compensation -20
expect_value .laser_power_percent 85 --serial "$one" laser-power 85
expect 1 --serial "$one" laser-power 101
expect_value .laser_power_percent 85 --serial "$one" laser-power
expect_value '.scaling | .x2, .z1' $'1.25\n0.5' --serial "$one" scaling 1 1.25 1 1 0.5 1
expect 0 --serial "$one" wifi connect 'Lab net' <<< 'correct horse'
! grep -rq 'correct horse' "$work/out" "$work/err" || wrong "the key was printed"
expect_value .connected true --serial "$one" wifi status
expect 1 --serial "$one" wifi connect 'Lab net' <<< 'wrong key'
! grep -rq 'wrong key' "$work/out" "$work/err" || wrong "the key was printed"
expect 0 --serial "$one" wifi disconnect
expect_value .connected false --serial "$one" wifi status

[ "$failed" = 0 ] || exit 1
echo "every model answers what it has, and keeps what it is told"
