#!/usr/bin/env bash
# Builds the Debian packages in build/packages, twice in different folders and at different hours, which
# must give the same bytes, and has lintian look at them. For a fresh Debian and its root: it installs.
# Usage: build_packages.sh [ARCHITECTURE]    of another one, they are built across
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../build/packages"
target=${1:-$(dpkg --print-architecture)}
export DEBIAN_FRONTEND=noninteractive
install_packages() { apt-get install -qq -y --no-install-recommends "$@" > /dev/null; }

across=()
compilers=()
if [ "$target" != "$(dpkg --print-architecture)" ]; then
  dpkg --add-architecture "$target"
  across=("-a$target" -Pcross,nocheck)
  compilers=("crossbuild-essential-$target")
fi
apt-get update -qq
install_packages dpkg-dev lintian "${compilers[@]}"
version=$(dpkg-parsechangelog -l ../../debian/changelog -S Version)
folder=nuvconnect5-${version%-*}

# build HOURS OPTIONS...: in a folder of that name, by a clock so many hours off.
build() {
  mkdir "$1"
  tar -C "$1" -xf "nuvconnect5_${version%-*}.orig.tar.xz"
  cp -r ../../debian "$1/$folder/"
  cp nuvconnect5_*.orig.tar.xz "$1/"
  [ "$1" = 0 ] && apt-get build-dep -qq -y --no-install-recommends "${across[@]}" "./0/$folder" > /dev/null
  (cd "$1/$folder" && TZ="hour$1" dpkg-buildpackage -us -uc "${across[@]}" "${@:2}") > "$1.log" 2>&1 ||
    { tail -n 40 "$1.log" >&2; return 1; }
}
build 0
build 5 -b
differ=0
for package in 0/*.deb; do
  cmp "$package" "5/${package#0/}" || differ=1
done
[ "$differ" = 0 ]
echo "built twice, the same bytes"
# Root is who this Debian belongs to.
lintian --allow-root --fail-on error,warning --tag-display-limit 0 0/*.changes
mkdir debug  # apart, so that a folder's packages can be installed together
mv 0/*-dbgsym_*.deb debug/
mv 0/*.{deb,dsc,changes,buildinfo} 0/*.debian.tar.xz .
rm -r 0 5
ls -l ./*.deb
