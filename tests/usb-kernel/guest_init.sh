#!/bin/busybox sh
# The first process of the virtual machine.
/bin/busybox --install -s /bin
export PATH=/bin LD_LIBRARY_PATH=/lib HOME=/tmp
mount -t proc none /proc
mount -t sysfs none /sys
mount -t devtmpfs none /dev
mount -t tmpfs none /tmp
ln -s /proc/self/fd /dev/fd
ln -s /proc/self/fd/2 /dev/stderr
while read -r module; do insmod "/modules/$module.ko" || echo "cannot load $module"; done < /modules/order
ifconfig lo 127.0.0.1 up
echo "=== guest: Linux $(uname -r), $(nproc) CPU, $(cut -d ' ' -f 1 /proc/uptime) s after the start"
result=0
for script in /scripts/*; do bash "$script" || result=1; done
grep -q nuv_verbose=1 /proc/cmdline && dmesg | tail -n 40
echo "=== result $result"
poweroff -f
