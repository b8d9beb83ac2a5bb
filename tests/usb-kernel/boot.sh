#!/usr/bin/env bash
# Boots Debian's kernel in a virtual machine that has the programs of a build, loads the modules for USB
# and for poor networks there, and runs scripts as the only user. What they print comes out here.
# Usage: boot.sh BUILD_FOLDER CPUS SCRIPT...
# Exit status: 0 all scripts ended with 0; 1 one did not, or time was up.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1/bin" && pwd)
work=$(cd "$1/.." && pwd)/usb-kernel
cpus=$2
scripts=("${@:3}")
limit=${NUV_USB_KERNEL_SECONDS:-450}

# The kernel that linux-image-amd64 stands for, unpacked and not installed; kept for the next run.
# The cloud kernels, which a virtual machine would otherwise have, lack the modules.
fetch_kernel() {
  local package
  package=$(apt-cache depends linux-image-amd64 |
    awk '/Depends: linux-image-[0-9]/ && !/cloud|rt/ {print $2; exit}')
  [ -n "$package" ] || { echo "apt knows no linux-image-amd64" >&2; exit 1; }
  [ -e "$work/$package/complete" ] && { echo "$work/$package"; return; }
  rm -rf "${work:?}/$package" && mkdir -p "$work/$package"
  (cd "$work/$package" && apt-get download -qq "$package" && dpkg-deb -x ./*.deb . && rm ./*.deb) \
    >&2 2>/dev/null
  touch "$work/$package/complete"
  echo "$work/$package"
}

# add_module NAME: after those that it needs, each once, in the order of loading.
add_module() {
  local name=${1//-/_} file each
  [[ " ${loaded:-} " == *" $name "* ]] && return
  file=$(find "$kernel" -name "$name.ko*" -o -name "${name//_/-}.ko*" | head -n 1)
  [ -n "$file" ] || return 0  # built in
  for each in $(modinfo -F depends "$file" | tr , ' '); do add_module "$each"; done
  loaded="${loaded:-} $name"
  case "$file" in
    *.xz) xz -dc "$file" > "$root/modules/$name.ko" ;;
    *) cp "$file" "$root/modules/$name.ko" ;;
  esac
  echo "$name" >> "$root/modules/order"
}

# add_program FILE: with the shared libraries that it needs, all in one folder but for the loader,
# whose place is fixed.
add_program() {
  local library place
  cp "$1" "$root/bin/"
  for library in $(ldd "$1" | grep -o '/[^ ]*'); do
    place=$root/lib/${library##*/}
    [[ "$library" == */ld-linux* ]] && place=$root$library
    [ -e "$place" ] || { mkdir -p "${place%/*}"; cp -L "$library" "$place"; }
  done
}

kernel=$(fetch_kernel)
root=$(mktemp -d)
trap 'rm -rf "$root" "$root.cpio" "$root.log"' EXIT
mkdir -p "$root"/{bin,lib,modules,scripts,dev,proc,sys,tmp,run,var/run,usr/share/hwdata}
touch "$root/usr/share/hwdata/usb.ids"
for module in usblp vhci-hcd veth sch_netem; do add_module "$module"; done
cp /bin/busybox "$root/bin/"
for program in /bin/bash /sbin/{ip,tc} /usr/sbin/usbip "$bin"/{nuvsim,nuvctl,nuvfile,nuv_usb_bench,nuv_scripted_host}; do
  [ ! -e "$program" ] || add_program "$program"
done
cp -L "$bin"/../lib/libNuvFile.so "$root/lib/"
find "$root"/{bin,lib} -type f -size +1M -exec strip --strip-debug {} + 2>/dev/null || true
install "$here/guest_init.sh" "$root/init"
cp "$here/guest_lib.sh" "$root/lib.sh"
cp "${scripts[@]}" "$root/scripts/"
(cd "$root" && find . | cpio -o -H newc --quiet) > "$root.cpio"

# The result is a line of its own, since a kernel that panics or hangs has no exit status.
timeout --foreground "$limit" qemu-system-x86_64 -M q35 -cpu max -accel tcg -smp "$cpus" -m 768 \
  -nographic -no-reboot -nic none -kernel "$kernel"/boot/vmlinuz-* -initrd "$root.cpio" \
  -append "console=ttyS0 quiet loglevel=3 panic=-1 random.trust_cpu=on nuv_verbose=${NUV_VERBOSE:-}" \
  < /dev/null | tr -d '\r' | tee "$root.log" | sed -u -n '/=== guest/,/^=== result/{s/.*=== guest/=== guest/;p}' || true
grep -q '^=== result 0$' "$root.log" || {
  grep -q '^=== result' "$root.log" || { echo "The guest did not come to its end:"; tail -n 30 "$root.log"; }
  exit 1
}
