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
# Goes on without those in the array `optional` where they can't be installed.
optional=()
need() {
    case $(uname -s) in
    Darwin) need_on_macos; return ;;
    esac
    command -v dpkg-query >/dev/null || { need_by_hand; return; }
    local become=() wanted=(cmake ninja-build g++ libgtest-dev libcli11-dev nlohmann-json3-dev "$@")
    local missing
    missing=$(missing_of "${wanted[@]}" ${optional[@]+"${optional[@]}"} $(boost_packages))
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        become=(sudo)
        if ! sudo -n true 2>/dev/null; then
            echo "$0: packages are missing. An administrator can install them:" >&2
            echo "    sudo apt-get update && sudo apt-get install --no-install-recommends $missing" >&2
            missing=$(missing_of "${wanted[@]}" $(boost_packages))
            [ -z "$missing" ] || exit 1
            return 0
        fi
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${become[@]}" apt-get -q update >&2
    missing=$(missing_of "${wanted[@]}" ${optional[@]+"${optional[@]}"} $(boost_packages)) # only now does apt know the Boost versions
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
    say_optional
}

need_by_hand() {
    local tool
    for tool in cmake ninja; do
        command -v $tool >/dev/null || { echo "$0: missing: $tool (besides: Boost 1.74 or later, GoogleTest, CLI11, nlohmann/json)" >&2; exit 1; }
    done
    say_optional
}

say_optional() {
    local tool
    for tool in ${optional[@]+"${optional[@]}"}; do
        command -v "$tool" >/dev/null || echo "$0: some tests need $tool, which is missing" >&2
    done
}

# build PRESET [TARGET...]: configures once, or again if `configure_again` is set, then builds.
build() (
    preset=$1 log=build/$1.log
    shift
    cd "$root"
    mkdir -p build
    echo "building, with a log in $log" >&2
    if [ ! -e "build/$preset/build.ninja" ] || [ -n "${configure_again-}" ]; then
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
)

# run_tests PRESET [CTEST-ARGUMENT...]: ends with the reasons of the tests that were skipped.
run_tests() (
    cd "$root"
    log=build/$1/Testing/Temporary/LastTest.log status=0
    rm -f "$log"
    ctest --preset "$1" -j "$(getconf _NPROCESSORS_ONLN)" "${@:2}" || status=$?
    [ ! -e "$log" ] || awk '
        /^[0-9]+\/[0-9]+ Testing: / { test = $3 }
        /^Skipped: / { skip(substr($0, 10)) }
        is_next { skip($0); is_next = 0 }
        /: Skipped$/ { is_next = 1 } # GoogleTest: the place, then the reason
        function skip(reason) { if (!count++) print "\nSkipped, and why:"; print "  " test ": " reason }' "$log"
    exit $status
)
