# What the project needs from Debian, and how it is installed. Sourced from the top folder by
# the scripts that need any of it.
. scripts/build.sh

build_packages=(
    g++ cmake ninja-build
    firebird-dev firebird3.0-server-core firebird3.0-utils libib-util
    libfmt-dev libcli11-dev nlohmann-json3-dev libncurses-dev libedit-dev libmd-dev
)

# What the benchmarks measure with, and what they measure against.
bench_packages=(
    libbenchmark-dev firebird3.0-server python3 python3-pygal time
    libsoci-dev libsoci-firebird4.0 libdbd-firebird-perl qtbase5-dev libqt5sql5-ibase python3-pyqt5.qtsql
)

# The server package brings a server program that tests start themselves; the readers check our DBF files; tmux is
# the terminal that browse is shown on; the line with dpkg-dev makes packages, looks at them, and calls the C
# interface; less is the pager, and the shells complete command lines.
test_packages=(
    libgtest-dev librapidcheck-dev clang-format doxygen
    firebird3.0-server
    python3 python3-dbfread python3-dbf shapelib gdal-bin dbview
    tmux
    dpkg-dev debhelper dh-python lintian mkdocs pkg-config file man-db groff-base libffi-platypus-perl
    less zsh fish
    "${bench_packages[@]}"
)

# What fuzz/run.sh builds with; the tests run the kept inputs without it.
fuzz_packages=(clang libclang-rt-14-dev)

# What the programs of `./test.sh --arch i386` are built and packed with and link, besides the packages above.
i386_packages=(
    g++-multilib binutils-i686-linux-gnu
    libfbclient2:i386 libfmt-dev:i386 libgtest-dev:i386 librapidcheck-dev:i386 libedit2:i386 libmd0:i386 libncurses6:i386 libncursesw6:i386
    libicu72:i386 libtommath1:i386 libffi8:i386
)

# What scripts/analyse.sh and scripts/coverage.sh run.
analysis_packages=(valgrind clang-tidy cppcheck gcovr)

# missing_packages NAME... prints those that are not installed.
missing_packages() {
    local name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$name" 2>/dev/null | grep -qx installed || echo "$name"
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
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$@" || status=$?
    [ -z "$made_policy" ] || $as_root rm -f "$policy"
    return "$status"
}

# package_steps turns what apt-get install writes into lines "[12/345] Unpacking NAME", and leaves out the rest.
package_steps() {
    local line kind upgraded new name count='?'
    local -A done=([Fetching]=0 [Unpacking]=0 ["Setting up"]=0)
    while IFS= read -r line; do
        case "$line" in
            *' upgraded, '*' newly installed, '*)
                read -r upgraded _ new _ <<<"$line"
                count=$((upgraded + new))
                continue ;;
            Get:*) read -r _ _ _ _ name _ <<<"$line"; kind=Fetching ;;
            'Unpacking '*) read -r _ name _ <<<"$line"; kind=Unpacking ;;
            'Setting up '*) read -r _ _ name _ <<<"$line"; kind='Setting up' ;;
            *) continue ;;
        esac
        done[$kind]=$((done[$kind] + 1))
        echo "[${done[$kind]}/$count] $kind $name"
    done
}

# become_root sets as_root to what makes a command run as root; fails when there is no way.
become_root() {
    as_root=
    [ "$(id -u)" -eq 0 ] && return 0
    command -v sudo >/dev/null && { sudo -n true 2>/dev/null || { [ -t 0 ] && sudo true; }; } || return 1
    as_root=sudo
}

# ensure_architecture NAME lets packages of another architecture be installed; otherwise says what to run and stops.
ensure_architecture() {
    dpkg --print-foreign-architectures | grep -qx "$1" && return 0
    become_root || { echo "As root, run: dpkg --add-architecture $1" >&2; exit 1; }
    $as_root dpkg --add-architecture "$1"
}

# ensure_packages NAME... installs what is missing, as root or with sudo; otherwise says what to run and stops.
ensure_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    if ! become_root; then
        echo "These Debian packages are missing. As root, run:" >&2
        echo "  apt-get install -y --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    local log
    log=$(mktemp)
    # Without one of its lists apt-get may still know all that is wanted.
    $as_root apt-get update -q >"$log" 2>&1 || echo "Not all lists of packages could be refreshed; going on with what they have."
    if ! install_packages "${missing[@]}" 2>&1 | tee -a "$log" | package_steps | some_steps 20; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        echo "The packages could not be installed." >&2
        exit 1
    fi
    rm -f "$log"
}
