# Shared by ./run, ./test and what they start: say what is done, install what is missing, build. Sourced, not run;
# the caller has set `set -euo pipefail`.

# What everything needs that is built here. Whoever needs more adds it before install_missing.
packages=(g++ cmake ninja-build libcli11-dev)
# What the tests need besides.
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev iproute2)

# give_up SENTENCE...: ends with one clear sentence and status 1.
give_up() {
    printf '%s\n' "$*" >&2
    exit 1
}

# Installs the packages that are not there yet; touches nothing when all are.
install_missing() {
    local missing=() package as_root=() said
    for package in "${packages[@]}"; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ! command -v apt-get >/dev/null; then
        give_up "These packages are missing, and this is no Debian that could install them: ${missing[*]}"
    fi
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            give_up "These packages are missing and there is no sudo. As root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}" >&2
    said=$(mktemp)
    # shellcheck disable=SC2024 # the file is the caller's own
    if ! { "${as_root[@]}" apt-get update -qq && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$said" 2>&1; then
        tail -n 5 "$said" >&2
        rm -f "$said"
        give_up "The packages could not be installed (is there a network?): ${missing[*]}"
    fi
    rm -f "$said"
}

# Shows a build's progress on a terminal, one line for all of it.
progress() {
    if [[ -t 2 ]]; then
        sed -un 's#^\[\([0-9]*\)/\([0-9]*\)\].*#\1 of \2#p' | while read -r line; do
            printf '\r%s built ' "$line" >&2
        done
        printf '\r\033[K' >&2
    else
        cat >/dev/null
    fi
}

# build PRESET [TARGET...]: into build/PRESET, one at a time. The log is shown only when something fails.
build() {
    local preset=$1 log=build/$1.log started=$SECONDS
    shift
    mkdir -p build 2>/dev/null && [[ -w build ]] ||
        give_up "Nothing can be written to $PWD/build: the tree is read-only, or another user's."
    exec {lock}>"build/.$preset.lock"
    if ! flock -n "$lock"; then
        echo "Another build of $preset is going on; waiting for it" >&2
        flock "$lock"
    fi
    echo "Building ($preset; its log is $log)" >&2
    if ! {
        { [[ -f build/$preset/build.ninja ]] || cmake --preset "$preset"; } &&
            cmake --build "build/$preset" ${1:+--target "$@"}
    } 2>&1 | tee "$log" | progress; then
        tail -n 60 "$log" >&2
        give_up "The build failed; the whole log is $log"
    fi
    exec {lock}>&-
    echo "Built in $((SECONDS - started)) s" >&2
}
