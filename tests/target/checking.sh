# shellcheck shell=bash
# shellcheck disable=SC2154 # the caller's
# Shared by packages.sh and pages.sh: checks that are counted, and a fresh Debian at $root. Sourced; `cache` and `root` are
# the caller's.

passed=0
failed=0

# check WHAT COMMAND...: passes when the command does; its output is shown when it does not.
check() {
    local what=$1 output
    shift
    if output=$("$@" 2>&1); then
        passed=$((passed + 1))
        echo "  ok    $what"
    else
        failed=$((failed + 1))
        printf '  FAIL  %s\n%s\n' "$what" "$output"
    fi
}

in_root() { chroot "$root" "$@"; }

# A small Debian with systemd, made once and unpacked anew for every run.
fresh_root() {
    local mirror plain=$cache/debian.tar
    if [[ ! -f $plain ]]; then
        # shellcheck disable=SC2016 # the text is apt's own
        mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Codename: bookworm' 'Component: main' \
            'Created-By: Packages' | sort -u | head -n 1)
        rm -rf "$cache/debian" &&
            debootstrap --variant=minbase --include=init-system-helpers,systemd,dbus,net-tools bookworm "$cache/debian" \
                "$mirror" >"$cache/debootstrap.log" 2>&1 &&
            tar -C "$cache/debian" -cf "$plain.new" . && mv "$plain.new" "$plain"
        rm -rf "$cache/debian"
    fi
    mkdir -p "$root" && tar -C "$root" -xf "$plain"
}
