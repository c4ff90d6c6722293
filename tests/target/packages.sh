#!/bin/bash
# packages.sh CACHE ARMHF_DEB AMD64_DEB: the packages as a user gets them: lintian, the unit's restrictions,
# and an installation into a fresh Debian. As root.
set -uo pipefail

cache=$(mkdir -p "$1" && cd "$1" && pwd)
deb_arm=$2
deb_pc=$3
here=$(cd "$(dirname "$0")" && pwd)
unit=$here/../../packaging/tavrik.service
expected="tavrik T-$(dpkg-deb -f "$deb_pc" Version)"
# shellcheck source=tests/target/checking.sh
. "$here/checking.sh"
most_exposed=25 # tenths of systemd-analyze's 0 (safe) to 10

# says EXPECTED COMMAND...: passes when the command prints exactly that.
says() {
    local wanted=$1 got
    shift
    if ! got=$("$@") || [[ $got != "$wanted" ]]; then
        echo "expected $wanted, got $got"
        return 1
    fi
}

install_deb() {
    cp "$1" "$root/tmp/tavrik.deb"
    in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends /tmp/tavrik.deb
}

# The wall of a settings file, drawn where the package is installed.
draw_there() {
    mkdir -p "$root/tmp/wall"
    printf '%s\n' kUdpServerPort=80 kActKeyEvent= kHotkeymap= kHotCmd0= kHotCmd1= kHotCmd2= kOutNum=1 \
        'kOutIpmap0=0,0,10.0.0.1#0,0,10.0.1.1' >"$root/tmp/wall/tav_rik.ini"
    in_root tavrikctl draw /tmp/wall/tav_rik.ini
}

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
chmod 755 "$root"

# What it would say, with the reason for each thing that is as it should be in the overrides.
for deb in "$deb_arm" "$deb_pc"; do
    for package in "$deb" "${deb/tavrik_/tavrik-tools_}"; do
        check "lintian says nothing on ${package##*/}" says "" lintian --allow-root "$package"
    done
done
systemd-analyze security --offline=true --no-pager "$unit" | tail -n 1
check "the unit's exposure is 2.5 at most" \
    systemd-analyze security --offline=true --no-pager --threshold="$most_exposed" "$unit"
check "a fresh Debian" fresh_root
check "apt installs the amd64 package" install_deb "$deb_pc"
check "  the daemon runs there" says "$expected" in_root tavrik --version
check "apt installs its tools" install_deb "${deb_pc/tavrik_/tavrik-tools_}"
check "  they draw the wall of a board" says "0,0 10.0.0.1
+----------+
| 10.0.1.1 |
|          |
+----------+" draw_there
check "  the unit verifies there" systemd-analyze verify --man=no --root="$root" tavrik.service
check "  the unit is enabled" test -L "$root/etc/systemd/system/multi-user.target.wants/tavrik.service"
touch "$root/data/tav_rik.ini"
check "  it goes away again" in_root apt-get purge -y tavrik
check "  and leaves the settings" test -f "$root/data/tav_rik.ini"
check "armhf is added" in_root dpkg --add-architecture armhf
check "apt installs the armhf package" install_deb "$deb_arm"
check "  the daemon runs there" says "$expected" "$(command -v qemu-arm-static || command -v qemu-arm)" \
    "$root/usr/sbin/tavrik" --version

echo "$passed passed, $failed failed"
((failed == 0))
