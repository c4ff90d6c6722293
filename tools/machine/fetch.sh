#!/bin/bash
# fetch.sh ARCH CACHE: Debian's kernel and busybox for ARCH (armhf or amd64), unpacked into CACHE/root.
# apt works on lists and a state of its own in CACHE; the machine's own apt is left as it is.
set -euo pipefail

arch=$1
cache=$(mkdir -p "$2" && cd "$2" && pwd)
declare -A kernels=([armhf]=linux-image-armmp [amd64]=linux-image-amd64)

mkdir -p "$cache"/apt/{state/lists,cache/archives}/partial "$cache/apt/sources"
# The machine's own Debian sources; archives of others know no such packages.
shopt -s nullglob
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*; do
    if [[ -f $list ]] && grep -qE '/debian(-security)?/?( |$)' "$list"; then
        cp "$list" "$cache/apt/sources/"
    fi
done
apt_options=(
    -o "APT::Architecture=$arch" -o "APT::Architectures::=$arch" -o APT::Sandbox::User=root
    -o "Dir::State=$cache/apt/state" -o Dir::State::status=/dev/null -o "Dir::Cache=$cache/apt/cache"
    -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
    -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$cache/apt/sources"
    -o Acquire::Languages=none -o Acquire::Retries=3
)

# One stale index is no reason to stop: what counts is that the packages are there.
apt-get "${apt_options[@]}" -qq update || echo "fetch: some lists are missing, going on" >&2
kernel=$(apt-cache "${apt_options[@]}" depends "${kernels[$arch]}" |
    sed -n 's/.*Depends: \(linux-image-[0-9][^ ]*\).*/\1/p' | head -n 1)
if [[ -z $kernel ]]; then
    echo "fetch: no kernel package for $arch" >&2
    exit 1
fi

rm -rf "$cache/new" && mkdir -p "$cache/new"
cd "$cache/new"
apt-get "${apt_options[@]}" -qq download "$kernel" busybox-static
for package in *.deb; do
    dpkg-deb -x "$package" root
    rm "$package"
done
version=$(basename root/lib/modules/*)
depmod -b root "$version"
rm -rf "$cache/root" && mv root "$cache/root"
rmdir "$cache/new"
echo "$version" >"$cache/version"
