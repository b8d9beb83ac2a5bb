#!/usr/bin/env bash
# Tries the packages in build/packages out as their users would, on a Debian with nothing installed and its
# root: the programs, programs of one's own, Python; then all is removed and nothing of it is left.
# Usage: try_packages.sh [ARCHITECTURE]    of another one, only the programs, run by an emulator
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../build/packages"
target=${1:-$(dpkg --print-architecture)}
export DEBIAN_FRONTEND=noninteractive
packages=$PWD work=$(mktemp -d)
trap 'kill "${simulator:-}" 2> /dev/null || true; rm -rf "$work"' EXIT
install_packages() { apt-get install -qq -y --no-install-recommends "$@" > /dev/null; }
of() { echo "$packages/$1"_*_"${2:-$target}.deb"; }
ours=(nuvconnect-common libnuvfile0 libnuvprinter0 nuvconnect-tools)
ours_now() { find / -xdev \( -path /nuvconnect5 -o -path /proc -o -path "$work" \) -prune -o -iname '*nuv[cfps]*' -print; }

emulator=()
if [ "$target" != "$(dpkg --print-architecture)" ]; then
  dpkg --add-architecture "$target"
  apt-get update -qq
  install_packages qemu-user-static
  emulator=(qemu-aarch64-static)
else
  apt-get update -qq
fi
[ -z "$(ours_now)" ] || { ours_now; exit 1; }

# shellcheck disable=SC2046
install_packages $(of nuvconnect-common all) $(of libnuvfile0) $(of libnuvprinter0) $(of nuvconnect-tools)
cd "$work"
run() { "${emulator[@]}" "/usr/bin/$1" "${@:2}"; }
run nuvctl --version
run nuvsim --address 127.0.0.1 --serial SN1 --job-dir jobs > log &
simulator=$!
until grep -qs '^ready' log; do kill -0 "$simulator" && sleep 0.1; done
seq -f 'G1 X%g' 100 > lines
run nuvfile create --machine-id 3DPSNKG53WTW00001 lines crown.nuv
run nuvctl --address 127.0.0.1 send crown.nuv
sed 's/$/\r/' lines | cmp - jobs/*.data
echo "ok    the programs, with what they need to run and nothing else"

if [ "$target" = "$(dpkg --print-architecture)" ]; then
  # shellcheck disable=SC2046
  install_packages $(of libnuvconnect5-0) $(of nuvconnect-dev) g++ cmake make pkg-config
  ours+=(libnuvconnect5-0 nuvconnect-dev python3-nuvprinter)
  examples=/usr/share/doc/nuvconnect-dev/examples
  # shellcheck disable=SC2046
  cc "$examples/list_printers.c" $(pkg-config --cflags --libs nuvprinter) -o by_hand
  ./by_hand 127.0.0.1 | grep SN1
  cmake -S "$examples" -B build > cmake.log
  cmake --build build >> cmake.log
  build/find_printers 127.0.0.1 | grep SN1
  echo "ok    an example built by pkg-config, all by CMake"
  # shellcheck disable=SC2046
  install_packages $(of python3-nuvprinter all)
  cat > own.py <<'PYTHON'
import nuvprinter
with nuvprinter.Printer.open_address("127.0.0.1") as printer:
    assert printer.get_identity().serial == "SN1"
PYTHON
  python3 own.py
  python3 -m nuvprinter list 127.0.0.1 | grep SN1
  echo "ok    Python"
fi

kill "$simulator"
dpkg --purge "${ours[@]}" > purged
left=$(ours_now)
[ -z "$left" ] || { echo "left behind: $left"; exit 1; }
echo "ok    removed, and nothing is left"
