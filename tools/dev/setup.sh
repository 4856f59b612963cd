# Shared by ./demo, ./check and bench/run: installs what is missing (Debian packages) and builds a CMake preset.
# Sourced from the top folder of the tree, by bash.

build_packages=(
    g++ cmake ninja-build pkg-config
    libyang2-dev libxml2-dev libarchive-dev zlib1g-dev libcli11-dev libfmt-dev nlohmann-json3-dev nettle-dev
    libsqlite3-dev
    libgtest-dev libgmock-dev librapidcheck-dev
)

# What the tests run; make for the builds against a device SDK, which take CMake's default generator, git for fleets of
# repositories.
test_packages=(make binutils git libyang2-tools mandoc python3 python3-jsonschema python3-fastjsonschema
    python3-junitparser)

# What ./check --all needs besides.
all_packages=(clang-14 libclang-rt-14-dev clang-tidy-14 cppcheck abigail-tools valgrind)

# For tests/manual/completion_test.py, a stage of ./check --all.
shell_packages=(bash zsh fish python3 python3-pexpect)

# For tools/dev/check-packages, a stage of ./check --all.
package_packages=(build-essential dpkg-dev debhelper lintian blhc autopkgtest man-db mandoc)

# For tests/browser/run, a stage of ./check --all. Chromium has its sandbox in a package of its own; of other makers than
# Debian, npm comes with Node.js.
browser_packages=(nodejs chromium chromium-sandbox fonts-dejavu-core)
command -v npm >/dev/null || browser_packages+=(npm)

# For tests/fleet/parallel_test.py and slurm_test.py, a stage of ./check --all: servers, which install_servers does not start.
fleet_packages=(python3 parallel openssh-server openssh-client slurmctld slurmd slurm-client)

coverage_packages=(gcovr)

# For bench/run only.
bench_packages=(python3 python3-lxml xsltproc libxml2-utils libyang2-tools valgrind)

# What is shown, tested and measured is the same for everyone: no bgp-rehearse.toml of one's own counts.
export XDG_CONFIG_HOME=$PWD/build/no-configuration

say() { printf '== %s\n' "$*"; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        printf 'Missing packages can only be installed as root or with sudo: %s\n' "$*" >&2
        return 1
    fi
}

install_missing() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "Installing ${missing[*]}"
    as_root apt-get -qq update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
}

enabled_units() { systemctl list-unit-files --state=enabled --no-legend 2>/dev/null | cut -d' ' -f1 | sort; }

# The same for packages with servers: none of these is started, now or with the machine.
install_servers() {
    local policy=/usr/sbin/policy-rc.d before units status=0
    before=$(enabled_units || true)
    [ -e "$policy" ] || printf '#!/bin/sh\n# by tools/dev/setup.sh\nexit 101\n' | as_root install -m 755 /dev/stdin "$policy"
    install_missing "$@" || status=$?
    ! grep -q 'by tools/dev/setup.sh' "$policy" || as_root rm "$policy"
    units=$(comm -13 <(echo "$before") <(enabled_units || true))
    [ -z "$units" ] || as_root systemctl disable --quiet $units || true
    return "$status"
}

# build PRESET [TARGET...]: configures build/PRESET and builds it; the compiler's output shows only when something fails.
build() {
    local preset=$1 log
    shift
    say "Building ($preset)"
    mkdir -p build
    log=build/$preset.log
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${@:+--target "$@"}; } >"$log" 2>&1; then
        cat "$log" >&2
        printf 'The build failed; its whole output is in %s\n' "$log" >&2
        return 1
    fi
}
