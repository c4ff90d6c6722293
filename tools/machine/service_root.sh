#!/bin/bash
# service_root.sh DEBIAN ROOT BUSYBOX GUEST DEB...: a Debian in the directory ROOT, with systemd, the packages
# DEB installed, and a command loop on its serial console. As root.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
debian=$1
root=$2
busybox=$3
guest=$4
debs=("${@:5}")

mkdir -p "$root"
tar -C "$root" -xf "$debian"
cp "${debs[@]}" "$root/tmp"
chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    "${debs[@]/#*\//\/tmp\/}"
mkdir -p "$root/version" "$root/etc/systemd/system/tavrik.service.d"
cp "$busybox" "$root/bin/busybox"
cp "$guest" "$root/usr/sbin/"
cp "$here/command_loop" "$root/usr/sbin/"
cat >"$root/etc/systemd/system/command-loop.service" <<'TEXT'
[Unit]
After=dbus.socket systemd-journald.service
[Service]
ExecStart=/bin/busybox sh /usr/sbin/command_loop
StandardInput=tty-force
StandardOutput=tty
StandardError=tty
TTYPath=/dev/ttyS0
[Install]
WantedBy=multi-user.target
TEXT
# A register of the machine (its firmware's memory) is read under the unit's own restrictions, as a board's
# would be; the unit itself stays as it is. The command loop starts it.
cat >"$root/etc/systemd/system/tavrik.service.d/test.conf" <<'TEXT'
[Service]
ExecStartPre=/bin/busybox devmem 0xF0000 32
TEXT
chroot "$root" systemctl enable command-loop.service
chroot "$root" systemctl disable tavrik.service
for unused in serial-getty@ttyS0.service getty.target systemd-networkd.service console-getty.service; do
    chroot "$root" systemctl mask "$unused"
done
