#!/bin/bash
# initramfs.sh CACHE OUTPUT PROGRAM...: a gzipped archive with busybox, the input modules of the kernel in
# CACHE, the first process `init` and the programs, each with the shared libraries it needs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
cache=$1
output=$2
shift 2
modules=(xhci-pci usbhid hid-generic evdev uinput joydev gpio_keys dummy)

version=$(cat "$cache/version")
library=$cache/root/lib/modules/$version
if [[ $version == *amd64 ]]; then
    modules+=(virtio_pci 9pnet_virtio 9p virtio_blk crc32c_generic ext4) # disks, see `init`
fi
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

# Appends the file of a module after the files of those that it needs; built-in ones have none.
declare -A listed
list_module() {
    local file=$1 needed
    if [[ -n ${listed[$file]:-} ]]; then
        return
    fi
    listed[$file]=yes
    for needed in $(sed -n "s|^$file: *||p" "$library/modules.dep" | tr ' ' '\n' | tac); do
        list_module "$needed"
    done
    mkdir -p "$tree/modules"
    cp "$library/$file" "$tree/modules/"
    echo "/modules/$(basename "$file")" >>"$tree/modules.list"
}
for module in "${modules[@]}"; do
    file=$(sed -n "s|^\([^:]*/${module//[-_]/[-_]}\.ko[^:]*\):.*|\1|p" "$library/modules.dep")
    if [[ -n $file ]]; then
        list_module "$file"
    elif ! grep -q "/${module//[-_]/[-_]}\.ko" "$library/modules.builtin"; then
        echo "initramfs: the kernel has no module $module" >&2
        exit 1
    fi
done

mkdir -p "$tree"/{bin,usr/sbin}
cp "$cache/root/bin/busybox" "$tree/bin/"
cp "$here/init" "$tree/init"
cp "$here/command_loop" "$tree/usr/sbin/"
for program in "$@"; do
    install -m 755 "$program" "$tree/usr/sbin/"
    while read -r shared; do
        mkdir -p "$tree$(dirname "$shared")"
        cp -L "$shared" "$tree$shared"
    done < <(ldd "$program" 2>/dev/null | grep -oE '/[^ ]+' || true)
done
(cd "$tree" && find . | cpio --quiet -o -H newc -R 0:0) | gzip -1 >"$output"
