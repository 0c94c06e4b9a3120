# What the project needs from Debian, and how it is installed. Sourced by demo.sh and test.sh.

build_packages=(
    g++ cmake ninja-build
    firebird-dev firebird3.0-server-core firebird3.0-utils libib-util
    libfmt-dev libcli11-dev nlohmann-json3-dev libncurses-dev libedit-dev
)

# What the benchmarks measure with, and what they measure against.
bench_packages=(
    libbenchmark-dev firebird3.0-server python3
    libsoci-dev libsoci-firebird4.0 libdbd-firebird-perl qtbase5-dev libqt5sql5-ibase
)

# The server package brings a server program that tests start themselves; the readers check our DBF files; the last
# line makes packages, looks at them, and calls the C interface.
test_packages=(
    libgtest-dev librapidcheck-dev clang-format doxygen
    firebird3.0-server
    python3 python3-dbfread python3-dbf shapelib gdal-bin dbview
    dpkg-dev pkg-config file man-db groff-base libffi-platypus-perl
    "${bench_packages[@]}"
)

# What fuzz/run.sh builds with; the tests run the kept inputs without it.
fuzz_packages=(clang libclang-rt-14-dev)

# missing_packages NAME... prints those that are not installed.
missing_packages() {
    local name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || echo "$name"
    done
}

# install_packages NAME... as root. No package may start a service while it is being installed.
install_packages() {
    local policy=/usr/sbin/policy-rc.d made_policy=
    if [ ! -e "$policy" ]; then
        printf '#!/bin/sh\nexit 101\n' | $as_root tee "$policy" >/dev/null
        $as_root chmod 755 "$policy"
        made_policy=yes
    fi
    local status=0
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
        $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" || status=$?
    [ -z "$made_policy" ] || $as_root rm -f "$policy"
    return "$status"
}

# ensure_packages NAME... installs what is missing, as root or with sudo; otherwise says what to run and stops.
ensure_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    as_root=
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null || ! sudo -n true 2>/dev/null && ! { [ -t 0 ] && sudo true; }; then
            echo "These Debian packages are missing. As root, run:" >&2
            echo "  apt-get install -y --no-install-recommends ${missing[*]}" >&2
            exit 1
        fi
        as_root=sudo
    fi
    local log
    log=$(mktemp)
    if ! install_packages "${missing[@]}" >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        echo "The packages could not be installed." >&2
        exit 1
    fi
    rm -f "$log"
}
