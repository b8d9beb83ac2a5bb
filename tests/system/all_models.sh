#!/usr/bin/env bash
# Every query of nuvctl against every model: answered by the models that docs/protocol.md says have
# it, refused by the others, and always with one JSON document on standard output. Then settings: what
# is set is what is read.
# Usage: all_models.sh BIN_FOLDER PROTOCOL_PAGE
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# The page's table of models: name, then an x under each feature; the features are its heads.
awk -F' *[|] *' '/^\| (Model|`)/ && NF > 12 {gsub("`", "", $2); printf "%s|", $2; for (i = 6; i < NF; ++i) printf "%s|", $i; print ""}' \
  "$2" > table
IFS='|' read -r _ heads < table
IFS='|' read -ra features <<< "$heads"
sed 1d table > models
[ "$(wc -l < models)" -ge 11 ] || { echo "the page's table of models has changed its form"; exit 1; }
# Commands, by the feature that they need (-: none). All but those that are no queries.
cat > commands <<'ROWS'
info,status,resin,versions,nickname,z-compensation,scaling|-
sensors,tank|sensors
sensors --laser 1|LSU
jobs|history
laser-power,skip-warmup|laser
wifi list,wifi status|wireless
leds|LED
ROWS

ask() { "$bin/nuvctl" --json --address 10.77.1.2 "$@"; }
# One after the other, at the same address.
served=0
serve() {
  if [ ${#processes[@]} -gt 0 ]; then
    kill "${processes[-1]}"
    wait "${processes[-1]}" || true
    unset 'processes[-1]'
  fi
  start_nuvsim "log.$((++served))" --address 10.77.1.2 --model "$1"
}

for command in $("$bin/nuvctl" --help | tr -d '\r' | sed -n '/^Finding/,/^Examples/s/^  \([a-z][a-z-]*\) .*/\1/p'); do
  case $command in list | printers | doctor | cancel | nuvctl | send | watch | firmware | gcode | raw) continue ;; esac
  grep -qE "(^|,)$command[ ,|]" commands || wrong "$0 has no row of $command"
done

while IFS='|' read -r model marks <&3; do
  serve "$model"
  IFS='|' read -ra has <<< "$marks"
  while IFS='|' read -r list feature; do
    exit=1
    [ "$feature" != - ] || exit=0
    for i in "${!features[@]}"; do
      [ "${features[$i]} ${has[$i]:-}" != "$feature x" ] || exit=0
    done
    IFS=, read -ra asked <<< "$list"
    for command in "${asked[@]}"; do
      # shellcheck disable=SC2086
      expect $exit ask $command < /dev/null
      holds 'length == 1'
    done
  done < commands
done 3< models

serve "Fabrix150 xP"  # it has all settings
for value in 'Büro: <2> = x' ''; do
  expect 0 ask nickname ${value:+"$value"}
  holds '.[0].nickname == "Büro: <2> = x"'
done
expect 0 ask --yes scaling 1 1.25 1 1 0.5 1
holds '.[0].scaling | .x2 == 1.25 and .z1 == 0.5'
expect 2 ask laser-power 101
expect 1 ask wifi connect 'Lab net' <<< 'wrong key'
expect 0 ask wifi connect 'Lab net' <<< 'correct horse'
! grep -q 'correct horse' out err || wrong "the key was printed"
expect 0 ask wifi status
holds '.[0].connected'
expect 0 ask wifi disconnect
finish "every model answers what it has, and keeps what it is told"
