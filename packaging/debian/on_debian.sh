#!/usr/bin/env bash
# Runs `./dev` of a clone of this repository on another Debian, with nothing installed there but what
# debootstrap installs. Needs root.
# Kept for the next run in build/debian/VERSION: the base system, apt's downloads and the compiler's
# cache; and, only to be looked at, the system of the last run.
# With arm64 for a version, what is built there is for that machine, and its tests run under an emulator.
# Usage: on_debian.sh VERSION CLONE [ARGUMENTS OF dev... | SCRIPT OF packaging/debian ARGUMENTS...]
#   without arguments: demo, then test; for arm64: test arm64
set -euo pipefail

# What is mounted and started here ends with it, however it ends.
if [ "${NUV_ON_DEBIAN:-}" != 1 ]; then
  exec env NUV_ON_DEBIAN=1 unshare --mount --pid --fork --kill-child -- "$0" "$@"
fi

version=$1 clone=$2
shift 2
case "$version" in
  12 | arm64) name=bookworm ;;
  13) name=trixie ;;
  *) echo "Debian $version is not known here: 12, 13 or arm64" >&2; exit 2 ;;
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

# Has the kernel hand programs for arm64 to the emulator, as Debian's package of it does for the whole
# machine. In a user namespace the table is its own, from Linux 6.7 on, and the machine stays as it is.
emulated() {
  [ ! -e /proc/sys/fs/binfmt_misc/qemu-aarch64 ] || { "$@"; return; }
  unshare --user --map-root-user --mount -- bash -c '
    table=$1/proc/sys/fs/binfmt_misc
    mount -t binfmt_misc none "$table" ||
      { echo "Programs for arm64 need qemu-user-static installed here, or Linux 6.7" >&2; exit 1; }
    magic="\x7fELF\x02\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\xb7\x00"
    mask="\xff\xff\xff\xff\xff\xff\xff\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff"
    printf "%s" ":qemu-aarch64:M::$magic:$mask:$1/usr/bin/qemu-aarch64-static:F" > "$table/register"
    shift; exec "$@"' - "$root" "$@"
}

# run ARGUMENTS OF dev..., or a script's name and its arguments
run() {
  local program=dev
  case "$1" in
    *.sh) program=packaging/debian/$1; shift ;;
  esac
  echo "=== Debian $(cat "$root/etc/debian_version"): $program $*"
  # With CI, warnings are errors.
  "${runner[@]}" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TERM="${TERM:-dumb}" http_proxy="$http_proxy" \
    CI=true NUV_JOBS="${NUV_JOBS:-$(nproc)}" chroot "$root" "/nuvconnect5/$program" "$@"
}
runner=()
if [ "$version" = arm64 ]; then
  run setup arm64
  runner=(emulated)
fi
if [ $# -gt 0 ]; then
  run "$@"
elif [ "$version" = arm64 ]; then
  run test arm64
  echo "SKIPPED: the virtual USB printer and the poor network: an emulator of programs has no kernel of its own"
  echo "SKIPPED: speed and memory: the figures would be the emulator's"
else
  run demo
  run test
fi
echo "PASS"
