# What the scripts of this folder share; sourced, never run.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Debian's name of a Boost library's development package: what is installed, else what is tested
# with, else what the system has.
boost_package() {
    local name
    name=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' "libboost-$1[0-9]*-dev" "libboost-$1-dev" 2>/dev/null |
        sed -n 's/^ii *//p' | head -n 1) || true
    [ -z "$name" ] || { echo "$name"; return; }
    if apt-cache show "libboost-${1}1.81-dev" >/dev/null 2>&1; then echo "libboost-${1}1.81-dev"; else echo "libboost-$1-dev"; fi
}

is_installed() { [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$1" 2>/dev/null)" = 'ii ' ]; }

# need PACKAGE...: makes sure of what every build needs, and of the Debian packages named besides.
need() {
    case $(uname -s) in
    Darwin) need_on_macos; return ;;
    esac
    command -v dpkg-query >/dev/null || { need_by_hand; return; }
    local package missing=() become=()
    for package in cmake ninja-build g++ libgtest-dev "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    for package in filesystem thread; do
        is_installed "$(boost_package $package)" || missing+=("boost:$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" != 0 ]; then
        if sudo -n true 2>/dev/null; then
            become=(sudo)
        else
            for package in "${!missing[@]}"; do
                case ${missing[package]} in boost:*) missing[package]=$(boost_package "${missing[package]#boost:}") ;; esac
            done
            echo "$0: these packages are missing, and this user may not install them:" >&2
            echo "    apt-get install --no-install-recommends ${missing[*]}" >&2
            exit 1
        fi
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${become[@]}" apt-get -q update >&2
    for package in "${!missing[@]}"; do # only now apt knows which Boost there is
        case ${missing[package]} in boost:*) missing[package]=$(boost_package "${missing[package]#boost:}") ;; esac
    done
    "${become[@]}" apt-get -q install -y --no-install-recommends "${missing[@]}" >&2
}

need_on_macos() {
    local formula missing=()
    command -v brew >/dev/null || { need_by_hand; return; }
    for formula in cmake ninja boost googletest; do
        brew list --formula "$formula" >/dev/null 2>&1 || missing+=("$formula")
    done
    [ ${#missing[@]} -eq 0 ] || { echo "$0: missing Homebrew formulae: brew install ${missing[*]}" >&2; exit 1; }
}

need_by_hand() {
    local tool
    for tool in cmake ninja; do
        command -v $tool >/dev/null || { echo "$0: missing: $tool (besides: Boost 1.74 or later, GoogleTest)" >&2; exit 1; }
    done
}

# build PRESET [TARGET...]: configures once and builds what has changed.
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
