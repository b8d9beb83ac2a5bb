#!/usr/bin/env bash
# Packs what a Windows developer needs: programs and libraries with all that they load, what to build
# against, examples, and the licences of what is inside.
# Usage: make_zip.sh BUILD_FOLDER ZIP
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
build=$1
zip=$(realpath -m "$2")
name=$(basename "$zip" .zip)
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

cmake --install "$build" --prefix "$stage/$name" --strip > /dev/null
x86_64-w64-mingw32-strip --strip-unneeded "$stage/$name"/bin/*.dll
cp -r examples python docs "$stage/$name/"
rm -r "$stage/$name/docs/site"
# What programs leave beside sources.
find "$stage/$name" -mindepth 1 \( -name __pycache__ -o -name '.*' \) -prune -exec rm -r {} +
cp README.md CHANGELOG.md "$stage/$name/"
mkdir -p "$stage/$name/licences"

# The library's part on the left, the Debian package that has its licence on the right. Qt is the same
# source for every system; the sysroot was built from that package too.
while read -r part package; do
  cp "/usr/share/doc/$package/copyright" "$stage/$name/licences/$part.txt"
done <<'PARTS'
Qt5Core-Qt5Network libqt5core5a
libcrypto libssl3
libgcc-libstdc++ gcc-mingw-w64-x86-64-posix-runtime
libwinpthread-mingw-w64 mingw-w64-x86-64-dev
zlib libz-mingw-w64-dev
CLI11 libcli11-dev
nlohmann-json nlohmann-json3-dev
asio libasio-dev
PARTS
cp /usr/share/common-licenses/{LGPL-3,GPL-3,Apache-2.0} "$stage/$name/licences/"

mkdir -p "${zip%/*}"
rm -f "$zip"
(cd "$stage" && zip -qr "$zip" "$name")
echo "$zip: $(du -h "$zip" | cut -f 1)"
