#!/usr/bin/env bash
# Unpacks the zip in an empty folder, builds the examples against it with nothing else, and runs them
# under Wine: printers are found and get a job over TCP and over USB.
# Usage: in_private_network.sh run_under_wine.sh check_windows_zip.sh ZIP USB_BRIDGE.exe EXPORTS_LIST
set -euo pipefail
zip=$(realpath "$1")
bridge=$(realpath "$2")
exports=$(realpath "$3")
tests=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
wine=$tests/support/run_under_wine.sh
work=$(mktemp -d)
processes=()
trap 'exec 4>&-; kill "${processes[@]}" 2> /dev/null || true; rm -rf "$work"' EXIT
cd "$work"
unzip -q "$zip"
root=$work/$(basename "$zip" .zip)
for folder in bin lib include cmake examples python/nuvprinter docs/guides licences; do
  [ -n "$(ls "$root/$folder")" ] || { echo "the zip has nothing in $folder"; exit 1; }
done
"$tests/api/check_exports.sh" "$root/bin/NuvConnect5.dll" "$exports"
for path in "${tests%/tests}" "$HOME" /tmp; do
  ! grep -rlF "$path/" "$root" || { echo "a path of the machine that built it is inside: $path"; exit 1; }
done

# Plain C by hand, and both as a CMake project.
x86_64-w64-mingw32-gcc-posix -Wall -Werror -I "$root/include" "$root/examples/print_file.c" \
  -L "$root/lib" -lNuvConnect5 -o by_hand.exe
cmake -S "$root/examples" -B examples -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_PREFIX_PATH="$root" \
  -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc-posix -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix > /dev/null
cmake --build examples > /dev/null
cp by_hand.exe examples/*.exe "$root/bin/"
echo "the examples are built against the zip alone"

start_nuvsim() {  # FOLDER OPTIONS...
  mkdir "$1"
  "$wine" "$root/bin/nuvsim.exe" --job-dir "$1" "${@:2}" > "$1.log" &
  processes+=("$!")
  "$tests/support/wait_for_line.sh" '^ready' "$1.log"
}
seq 1 30 | sed 's/.*/G1 X& Y0.125 E3.5/' > lines
"$wine" "$root/bin/nuvfile.exe" create --machine-id 3DPSNKG53WTW00001 lines job.nuv
# prints PROGRAM KIND FOLDER: the job reaches the printer of the folder byte for byte.
prints() {
  "$wine" "$root/bin/$1.exe" "$2" job.nuv
  sed 's/$/\r/' lines | cmp - "$(find "$3" -type f -size +0 | sort | tail -n 1)"
}

start_nuvsim tcp --address 10.77.1.2 --serial TCP0001 --layer-ms 60000
"$wine" "$root/bin/list_printers.exe" | tee listed  # C over nuvprinter.dll
grep -Eq '10.77.1.2 +TCP0001 .* idle' listed
prints by_hand network tcp
"$wine" "$root/bin/watch_print.exe" 3 | tee watched
grep -q 'layer .* of ' watched
start_nuvsim usb --address 127.0.0.1 --port 9000 --no-discovery --serial USB0001
mkfifo bridge.in
"$wine" "$bridge" 9000 'VID_11F1&PID_2601' USB0001 < bridge.in > bridge.log &
exec 4> bridge.in
"$tests/support/wait_for_line.sh" attached bridge.log
prints print_file usb usb
echo "listed, connected and sent a job over TCP and over USB, byte for byte"
for file in bin/NuvConnect5.dll bin/nuvprinter.dll bin/nuvctl.exe bin/nuvsim.exe bin/Qt5Core.dll; do
  printf '%-20s %6d KiB\n' "${file#*/}" $(($(stat -c %s "$root/$file") / 1024))
done
