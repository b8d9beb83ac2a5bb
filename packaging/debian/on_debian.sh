#!/usr/bin/env bash
# Runs `./dev` of a clone of this repository on another Debian, with nothing installed there but what
# debootstrap installs. Needs root.
# Kept for the next run in build/debian/VERSION: the base system, apt's downloads and the compiler's
# cache; and, only to be looked at, the system of the last run.
# Usage: on_debian.sh VERSION CLONE [ARGUMENTS OF dev...]    without arguments: demo, then test
set -euo pipefail

# What is mounted and started here ends with it, however it ends.
if [ "${NUV_ON_DEBIAN:-}" != 1 ]; then
  exec env NUV_ON_DEBIAN=1 unshare --mount --pid --fork --kill-child -- "$0" "$@"
fi

version=$1 clone=$2
shift 2
case "$version" in
  12) name=bookworm ;;
  13) name=trixie ;;
  *) echo "Debian $version is not known here: 12 or 13" >&2; exit 2 ;;
esac
kept=$PWD/build/debian/$version
root=$kept/system

# Where this machine has its own packages from.
mirror() {
  local uri
  uri=$(apt-get indextargets --format '$(REPO_URI)' \
    'Created-By: Packages' 'Origin: Debian' 'Label: Debian' | sed -n 1p)
  case "$uri" in
    mirror+file:*)
      uri=${uri#mirror+file:}
      uri=$(grep -o '^[^# ]\+' "${uri%/}" | sed -n 1p)
      ;;
  esac
  echo "$uri"
}

make_base() {
  local uri
  uri=$(mirror)
  [ -n "$uri" ] || { apt-get update -qq; uri=$(mirror); }
  [ -n "$uri" ] || { echo "apt has no sources of Debian here" >&2; exit 1; }
  rm -rf --one-file-system "$kept/base.part"
  debootstrap --variant=minbase "$name" "$kept/base.part" "$uri" > "$kept/debootstrap.log" ||
    { tail -n 20 "$kept/debootstrap.log" >&2; exit 1; }
  mv "$kept/base.part" "$kept/base"
}

mkdir -p "$kept"/{archives,ccache}
exec 9> "$kept/lock"
flock 9
eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
export http_proxy=${http_proxy:-}
[ -e "$kept/base" ] || make_base

rm -rf --one-file-system "$root"
cp -a "$kept/base" "$root"
cp -r "$clone" "$root/nuvconnect5"
cp -L /etc/resolv.conf "$root/etc/resolv.conf"
apt-config dump | grep -E '^Acquire::(https?::|Check-)' > "$root/etc/apt/apt.conf.d/00machine" || true
mkdir -p "$root/root/.cache/ccache"
mount --bind "$root" "$root"  # unshare wants the root folder to be a mount
mount -t proc proc "$root/proc"
mount --rbind /sys "$root/sys"
mount --rbind /dev "$root/dev"
mount --bind "$kept/archives" "$root/var/cache/apt/archives"
mount --bind "$kept/ccache" "$root/root/.cache/ccache"

# run ARGUMENTS OF dev...
run() {
  echo "=== Debian $(cat "$root/etc/debian_version"): ./dev $*"
  # With CI, warnings are errors.
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TERM="${TERM:-dumb}" http_proxy="$http_proxy" \
    CI=true NUV_JOBS="${NUV_JOBS:-$(nproc)}" chroot "$root" /nuvconnect5/dev "$@"
}
if [ $# -gt 0 ]; then
  run "$@"
else
  run demo
  run test
fi
echo "PASS"
