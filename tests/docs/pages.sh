#!/bin/bash
# What README.md and the pages tell people to type, taken from their text and typed in a fresh Debian: from a clone to
# installed packages, on armhf as an ordinary user and on amd64 as root. As root or through sudo; needs what
# tests/target/run.sh needs and keeps its Debian in the same place. Ends with "N passed, N failed".
#
# A board is not at hand: scp and ssh are small programs that copy into, and run in, the same Debian, with armhf added; an
# editor changes nothing, and there is no service manager. What apt asks is answered with yes.
set -uo pipefail

here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../.." && pwd)
if ((EUID != 0)); then
    exec sudo "$0"
fi
cd "$project" || exit 1
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages=(debootstrap)
install_missing
# shellcheck source=tests/target/checking.sh
. "$project/tests/target/checking.sh"
cache=$project/build/target-cache/packages
mkdir -p "$cache"
root=$(mktemp -d)
home=$root/home/user
trap 'umount -q "$root/proc" "$root/dev"; rm -rf --one-file-system "$root"' EXIT
chmod 755 "$root"

# commands FILE HEADING: the lines of the blocks under that heading; of a block with prompts, those behind "$ ".
commands() {
    awk -v heading="$2" '
        /^#/ { under = ($0 == heading) }
        /^```/ { inside = !inside; prompts = 0; next }
        under && inside && /^\$ / { prompts = 1; print substr($0, 3); next }
        under && inside && !prompts { print }' "$1"
}

# typed USER COMMAND: in the user's tree, as it stands in the text.
typed() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin su "$1" -c "cd $(in_tree "$1") && export PATH=/shims:\$PATH DEBIAN_FRONTEND=noninteractive && $2" < <(yes)
}
in_tree() { [[ $1 == root ]] && echo /root/tavrik || echo /home/user/tavrik; }

# every USER FILE HEADING [SED]: each command a check. A page without commands there is a mistake.
every() {
    local lines line
    mapfile -t lines < <(commands "$2" "$3" | sed "${4:-}")
    check "$2, \"$3\", has commands" test "${#lines[@]}" -gt 0
    for line in "${lines[@]}"; do
        check "  $1: $line" typed "$1" "$line"
    done
}

shims() {
    mkdir -p "$root/shims"
    cat >"$root/shims/scp" <<'SHIM'
#!/bin/sh
for last; do :; done
while [ $# -gt 1 ]; do sudo cp "$1" "/root/${last#*:}"; shift; done
SHIM
    # There is no log to be followed.
    cat >"$root/shims/ssh" <<'SHIM'
#!/bin/sh
shift
case $1 in
    journalctl) exit ;;
esac
cd /root 2>/dev/null
exec sudo sh -c "cd /root && $*"
SHIM
    printf '#!/bin/sh\n' | tee "$root/shims/nano" >"$root/shims/systemctl"
    chmod 755 "$root"/shims/*
}

prepare() {
    fresh_root && shims &&
        mount -t proc proc "$root/proc" && mount --bind /dev "$root/dev" &&
        chroot "$root" useradd -m user &&
        in_root apt-get update -qq && in_root apt-get install -y -qq --no-install-recommends sudo nftables &&
        echo 'user ALL=(ALL) NOPASSWD: ALL' >"$root/etc/sudoers.d/user" &&
        in_root dpkg --add-architecture armhf && in_root apt-get update -qq &&
        mkdir -p "$home/tavrik" "$root/root/tavrik" &&
        git archive HEAD | tee >(tar -C "$root/root/tavrik" -x) | tar -C "$home/tavrik" -x &&
        chroot "$root" chown -R user: /home/user
}

settings_there() {
    mkdir -p "$root/data"
    printf '%s\n' kUdpServerPort=80 kActKeyEvent= kHotkeymap= kHotCmd0= kHotCmd1= kHotCmd2= kOutNum=1 \
        'kOutIpmap0=0,0,192.168.1.20#0,0,192.168.1.31' | tee "$root/data/tav_rik.ini" >"$home/tavrik/tav_rik.ini"
}

filters() {
    sed -n '/^table inet/,/^}/p' docs/security.md >"$root/tmp/tavrik.nft" && in_root unshare -n nft -c -f /tmp/tavrik.nft
}

# The page of ./run, from a clone: it has to answer within two minutes. Its network is this machine's.
page_answers() {
    local started=$SECONDS page
    typed user './run --page --port 8123' >"$root/tmp/page.log" 2>&1 &
    page=$!
    until { exec 3<>/dev/tcp/127.0.0.1/8123 && printf 'GET / HTTP/1.1\r\nHost: 127.0.0.1:8123\r\n\r\n' >&3 &&
        grep -q '200 OK' <(head -n 1 <&3); } 2>/dev/null; do
        if ! kill -0 "$page" 2>/dev/null || ((SECONDS - started > 120)); then
            cat "$root/tmp/page.log"
            return 1
        fi
        sleep 1
    done
    pkill -f '/tavrik-page --port 8123'
    wait "$page"
    echo "the page answered after $((SECONDS - started)) s" >&2
}

check "a fresh Debian with an ordinary user" prepare
check "./run --page answers within 120 s" page_answers
every user README.md "## Two commands" '/^\.\/run  *the console/d; /^\.\/test  *every/d; /\.\.\.$/d'
every user README.md "## Install on a board" '/^tavrikctl/d'
check "  the program of the armhf package is there" test -x "$root/usr/sbin/tavrik"
in_root apt-get purge -y tavrik:armhf >/dev/null 2>&1
# As the text says: the same for a PC, with other names.
every root README.md "## Install on a board" '/^tavrikctl/d; /^ssh.*journal/d; /^sudo/s/^sudo //; s/g++-arm-linux-gnueabihf/g++ dpkg-dev file/
    s/arm /release /g; s/preset arm$/preset release/; s#build/arm#build/release#g; s/armhf/amd64/g'
check "  the daemon runs" in_root tavrik --version
check "  its tools install" in_root sh -c 'apt-get install -y /root/tavrik/build/release/tavrik-tools_*_amd64.deb'
settings_there
every root README.md "## Install on a board" '/^tavrikctl/!d'
every root docs/settings.md "# Settings" ''
cp "$home/tavrik/tav_rik.ini" "$root/root/tavrik/wall.ini"
every root docs/walls.md "# Five walls" 's/$/ --dry-run/' # there is no console
check "docs/security.md: the filters are taken" filters

echo "$passed passed, $failed failed"
((failed == 0))
