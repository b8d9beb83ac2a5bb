#!/usr/bin/env bash
# Runs a Windows program under Wine, or a script that starts several. A Wine prefix of its own goes
# with it: whatever serves the programs there belongs to the network that they run in. Within such a
# script this runs a program in the script's prefix.
# Usage: run_under_wine.sh PROGRAM.exe|SCRIPT.sh [ARGUMENTS...]
set -euo pipefail
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
[ -z "${NUV_IN_WINE_PREFIX:-}" ] || exec "$wine" "$@"

template=${NUV_WINE_TEMPLATE:-$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build/wine-prefix}
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver64)
# Without Mono, Gecko and menus, which it would offer to install or write.
export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="

if [ ! -e "$template/complete" ]; then
  mkdir -p "${template%/*}"
  (
    flock 9
    [ -e "$template/complete" ] && exit
    WINEPREFIX=$template "$wine" wineboot --init > /dev/null 2>&1
    WINEPREFIX=$template "$wineserver" --wait
    touch "$template/complete"
  ) 9> "$template.lock"
fi

prefix=$(mktemp -d)
export WINEPREFIX=$prefix/wine NUV_IN_WINE_PREFIX=1
cp -a --link "$template" "$WINEPREFIX"
# Wine writes into a registry file that has several names, which would then be every prefix's.
cp --remove-destination "$template"/*.reg "$WINEPREFIX"
end() {
  "$wineserver" --kill 2> /dev/null || true
  "$wineserver" --wait 2> /dev/null || true
  rm -rf "$prefix"
}
trap end EXIT
# In the background, since a shell takes signals only between what it runs in the foreground.
case "$1" in
  *.exe) "$wine" "$@" <&0 & ;;
  *)
    # Kept for all the programs of the script.
    "$wineserver" --persistent
    "$@" <&0 &
    ;;
esac
program=$!
trap 'kill "$program" 2> /dev/null' TERM INT
result=0
wait "$program" || result=$?
exit "$result"
