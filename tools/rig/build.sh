# Shared by ./run and ./test: install what is missing, build quietly. Sourced, not run; the caller has
# set `set -euo pipefail` and stands in the project's directory.

packages=(g++ cmake ninja-build libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev
    iproute2)

# Installs the packages that are not there yet; touches nothing when all are.
install_missing() {
    local missing=() package
    for package in "${packages[@]}"; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    echo "Installing ${missing[*]}"
    local root=()
    if ((EUID != 0)); then
        root=(sudo)
    fi
    "${root[@]}" apt-get update -qq
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET...]: into build/PRESET. The log is shown only when something fails.
build() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    if ! {
        { [[ -f build/$preset/build.ninja ]] || cmake --preset "$preset"; } &&
            cmake --build "build/$preset" ${1:+--target "$@"}
    } >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "The build failed; the whole log is $log" >&2
        return 1
    fi
}
