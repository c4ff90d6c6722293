#!/bin/bash
# The daemon on its target: the ARM build under emulation, on real kernels with real USB devices in an
# emulator (32-bit ARM and a PC), and as packages. Installs what is missing; as root or through sudo.
# Kernels and a fresh Debian are kept in build/target-cache. Ends with "N passed, N failed".
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
machine=$project/tools/machine
build=$project/build
cache=$build/target-cache
if ((EUID != 0)); then
    exec sudo "$0"
fi
cd "$project"
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh

packages+=("${test_packages[@]}" g++-arm-linux-gnueabihf libboost-dev googletest qemu-user qemu-system-arm qemu-system-x86 seabios debootstrap lintian
    e2fsprogs dpkg-dev cpio kmod systemd)
install_missing
mkdir -p "$cache"
# pack PRESET: the package of a build; prints its file.
pack() {
    rm -f "$build/$1"/tavrik*.deb
    (cd "$build/$1" && cpack -G DEB) >"$cache/pack-$1.log" 2>&1 || {
        cat "$cache/pack-$1.log" >&2
        return 1
    }
    echo "$build/$1"/tavrik_*.deb
}
# fetched ARCH: the kernel of ARCH, fetched when there is none or it is a week old.
fetched() {
    if [[ -n $(find "$cache/$1/version" -mtime -7 2>/dev/null) ]]; then
        return
    fi
    "$machine/fetch.sh" "$1" "$cache/$1" || [[ -f $cache/$1/version ]]
}

started=$SECONDS
(fetched armhf && fetched amd64) >"$cache/fetch.log" 2>&1 &
fetching=$!
build arm tavrik tavrikctl tavrik-target-guest
build release tavrik tavrikctl tavrik-target-guest tavrik-target-test
deb_arm=$(pack arm)
deb_pc=$(pack release)
wait "$fetching" || {
    cat "$cache/fetch.log"
    exit 1
}
stat -c '%n: %s bytes' "$build/arm/tavrik" "$build/release/tavrik"

"$machine/initramfs.sh" "$cache/armhf" "$cache/arm.img" "$build/arm/tavrik" \
    "$build/arm/tools/machine/tavrik-target-guest"
"$machine/initramfs.sh" "$cache/amd64" "$cache/pc.img" "$build/release/tavrik" \
    "$build/release/tools/machine/tavrik-target-guest"
driver=$build/release/tests/target/tavrik-target-test

# The one limit on the ARM program itself.
size=$(stat -c %s "$build/arm/tavrik")
small=$((size <= 1500000))
verdicts=(FAIL 'ok  ')
printf '  %s  the static ARM daemon: %d bytes (at most 1500000)\n%d passed, %d failed\n' "${verdicts[small]}" "$size" \
    "$small" "$((1 - small))" >"$cache/size.result"

# The ARM machine waits more than it works: the rest goes on beside it.
"$driver" arm "$cache"/armhf/root/boot/vmlinuz-* "$cache/arm.img" "$cache/arm.log" \
    >"$cache/arm.result" 2>&1 &
arm=$!
"$driver" pc "$cache"/amd64/root/boot/vmlinuz-* "$cache/pc.img" "$cache/pc.log" \
    >"$cache/pc.result" 2>&1 || true
"$here/packages.sh" "$cache/packages" "$deb_arm" "$deb_pc" >"$cache/packages.result" 2>&1 || true
"$driver" power "$cache"/amd64/root/boot/vmlinuz-* "$cache/pc.img" "$cache/power.log" \
    >"$cache/power.result" 2>&1 || true
# The package's unit, started by systemd on a real kernel.
disk=$(mktemp -d)
trap 'rm -rf "$disk"' EXIT
chmod 755 "$disk"
{
    "$machine/service_root.sh" "$cache/packages/debian.tar" "$disk" "$cache/amd64/root/bin/busybox" \
        "$build/release/tools/machine/tavrik-target-guest" "$deb_pc" "${deb_pc/tavrik_/tavrik-tools_}" >"$cache/disk.log" 2>&1 || cat "$cache/disk.log"
    "$driver" service "$cache"/amd64/root/boot/vmlinuz-* "$cache/pc.img" "$cache/service.log" "$disk"
} >"$cache/service.result" 2>&1 || true
wait "$arm" || true

passed=0
failed=0
for part in size arm pc power packages service; do
    echo "== $part"
    sed '$d' "$cache/$part.result"
    last=$(tail -n 1 "$cache/$part.result")
    if [[ $last =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
        passed=$((passed + BASH_REMATCH[1]))
        failed=$((failed + BASH_REMATCH[2]))
    else
        echo "  FAIL  did not come to its end: $last"
        failed=$((failed + 1))
    fi
done
echo "Logs of the machines: $cache/arm.log, $cache/pc.log, $cache/power.log, $cache/service.log. Seconds in all: $((SECONDS - started))"
echo "$passed passed, $failed failed"
((failed == 0))
