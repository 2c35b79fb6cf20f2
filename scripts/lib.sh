# Shared functions of the scripts in this folder; sourced, not run.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# The Boost packages, all of one version: the version whose headers are installed, since versions
# conflict; else the one used for testing; else the system's default.
boost_packages() {
    local version
    version=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' 'libboost[0-9]*-dev' 2>/dev/null |
        sed -n 's/^ii *libboost\([0-9.]*\)-dev$/\1/p' | sort -V | tail -n 1) || true
    if [ -z "$version" ] && apt-cache show libboost-filesystem1.81-dev >/dev/null 2>&1; then version=1.81; fi
    echo "libboost-filesystem$version-dev" "libboost-thread$version-dev"
}

is_installed() { [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$1" 2>/dev/null)" = 'ii ' ]; }

# need PACKAGE...: installs, if missing, the packages that every build needs and the given Debian packages.
need() {
    case $(uname -s) in
    Darwin) need_on_macos; return ;;
    esac
    command -v dpkg-query >/dev/null || { need_by_hand; return; }
    local become=() wanted=(cmake ninja-build g++ libgtest-dev libcli11-dev nlohmann-json3-dev "$@")
    local missing
    missing=$(missing_of "${wanted[@]}" $(boost_packages))
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        if ! sudo -n true 2>/dev/null; then
            echo "$0: these packages are missing, and this user may not install them:" >&2
            echo "    apt-get install --no-install-recommends $missing" >&2
            exit 1
        fi
        become=(sudo)
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${become[@]}" apt-get -q update >&2
    missing=$(missing_of "${wanted[@]}" $(boost_packages)) # only now does apt know the Boost versions
    # Must not remove any installed package.
    "${become[@]}" apt-get -q install -y --no-remove --no-install-recommends $missing >&2
}

missing_of() {
    local package missing=()
    for package; do is_installed "$package" || missing+=("$package"); done
    echo "${missing[*]}"
}

need_on_macos() {
    local formula missing=()
    command -v brew >/dev/null || { need_by_hand; return; }
    for formula in cmake ninja boost googletest cli11 nlohmann-json; do
        brew list --formula "$formula" >/dev/null 2>&1 || missing+=("$formula")
    done
    [ ${#missing[@]} -eq 0 ] || { echo "$0: missing Homebrew formulae: brew install ${missing[*]}" >&2; exit 1; }
}

need_by_hand() {
    local tool
    for tool in cmake ninja; do
        command -v $tool >/dev/null || { echo "$0: missing: $tool (besides: Boost 1.74 or later, GoogleTest, CLI11, nlohmann/json)" >&2; exit 1; }
    done
}

# build PRESET [TARGET...]: configures once, then builds.
build() (
    preset=$1 log=build/$1.log
    shift
    cd "$root"
    mkdir -p build
    echo "building, with a log in $log" >&2
    if [ ! -e "build/$preset/build.ninja" ] && ! cmake --preset "$preset" >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
)

# run_tests PRESET [CTEST-ARGUMENT...]
run_tests() (
    cd "$root"
    ctest --preset "$1" -j "$(getconf _NPROCESSORS_ONLN)" "${@:2}"
)
