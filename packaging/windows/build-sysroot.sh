#!/usr/bin/env bash
# Builds Qt 5 Core and Network and OpenSSL's libcrypto for Windows from Debian's source packages, and
# packs them into an archive such as ./dev windows takes.
# Usage: build-sysroot.sh ARCHIVE (windows-sysroot.tar.xz)
# It needs the rights to install packages, an apt that knows the network, and about 4 GB of disk.
# NUV_JOBS sets how many jobs run at once.
set -euo pipefail
archive=$(realpath -m "$1")
jobs=${NUV_JOBS:-$(nproc)}
target=x86_64-w64-mingw32
# Written into the libraries as their place; programs find them beside themselves instead.
place=/nuvconnect

packages=(g++ make perl python3 dpkg-dev xz-utils pkg-config g++-mingw-w64-x86-64-posix)
if ! dpkg -s "${packages[@]}" > /dev/null 2>&1; then
  as_root=()
  [ "$(id -u)" = 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" apt-get install -qq -y --no-install-recommends "${packages[@]}" > /dev/null
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
out=$work/windows-sysroot
mkdir -p "$out"/{bin,lib,include} "$work"/{apt/lists/partial,apt/parts,cross}
step() { printf '%5d s  %s\n' "$SECONDS" "$*"; }

# The sources come from where the machine's packages come from, with lists of our own so that the
# machine's stay as they are.
{ cat /etc/apt/sources.list 2> /dev/null; cat /etc/apt/sources.list.d/*.list 2> /dev/null; } |
  sed -n 's/^deb /deb-src /p' > "$work/apt/sources.list" || true
for file in /etc/apt/sources.list.d/*.sources; do
  [ ! -e "$file" ] || sed 's/^Types:.*/Types: deb-src/' "$file" > "$work/apt/parts/${file##*/}"
done
apt_own=(-o Dir::Etc::sourcelist="$work/apt/sources.list" -o Dir::Etc::sourceparts="$work/apt/parts"
  -o Dir::State::lists="$work/apt/lists" -o APT::Sandbox::User=)
step "fetching the sources"
apt-get "${apt_own[@]}" update -qq
# fetch_source PACKAGE: its newest version, or an older one where a mirror has not got that.
fetch_source() {
  local version
  for version in $(apt-cache "${apt_own[@]}" madison "$1" | awk '/Sources/ {print $3}'); do
    (cd "$work" && apt-get "${apt_own[@]}" source -qq "$1=$version" > log 2>&1) && return
  done
  cat "$work/log"
  echo "no source of $1" >&2
  return 1
}
fetch_source qtbase-opensource-src
fetch_source openssl

# Threads of the standard library need the compiler's posix variant, whatever the machine's default.
for tool in gcc g++ cpp gcc-ar gcc-nm gcc-ranlib; do
  ln -s "$(command -v "$target-$tool-posix")" "$work/cross/$target-$tool"
done
export PATH=$work/cross:$PATH

run() {  # quiet, unless it fails
  "$@" > "$work/log" 2>&1 || { tail -n 60 "$work/log"; exit 1; }
}

step "OpenSSL: libcrypto"
cd "$work"/openssl-*/
run ./Configure mingw64 shared no-tests no-legacy no-engine no-capieng \
  --cross-compile-prefix="$target-" --prefix="$place" --libdir=lib --openssldir="$place/ssl"
run make -j "$jobs" build_generated
run make -j "$jobs" libcrypto-3-x64.dll libcrypto.dll.a
cp libcrypto-3-x64.dll "$out/bin/"
cp libcrypto.dll.a "$out/lib/"
cp -r include/openssl "$out/include/"
rm -f "$out"/include/openssl/*.in

step "Qt: configure"
cd "$work"/qtbase-opensource-src-*/
run ./configure -prefix "$place" -extprefix "$out" -hostprefix "$out" -opensource -confirm-license \
  -release -shared -xplatform win32-g++ -device-option CROSS_COMPILE="$target-" \
  -no-gui -no-widgets -no-dbus -no-opengl -no-openssl -no-icu -qt-zlib -qt-pcre -qt-doubleconversion \
  -no-pch -no-sql-sqlite -nomake examples -nomake tests
run make -j "$jobs" sub-src-qmake_all
step "Qt: Core, Network, rcc"
run make -C src -j "$jobs" sub-corelib sub-network sub-rcc
step "Qt: install"
run make -C src sub-corelib-install_subtargets sub-network-install_subtargets \
  sub-rcc-install_subtargets sub-moc-install_subtargets sub-winmain-install_subtargets
mkdir -p "$out/mkspecs/modules"
cp -r mkspecs/win32-g++ "$out/mkspecs/"
# Qt's package files ask for it, though nothing runs it.
cp bin/qmake "$out/bin/"

step "packing"
"$target-strip" --strip-unneeded "$out"/bin/*.dll
strip "$out"/bin/{moc,rcc,qmake}
cd "$work"
mkdir -p "$(dirname "$archive")"
tar --owner=0 --group=0 --sort=name -cJf "$archive" windows-sysroot/bin/{moc,rcc,qmake} windows-sysroot/bin/*.dll \
  windows-sysroot/{lib,include,mkspecs}
step "done: $archive"
