# Debian packages that the builds and tests need, by purpose, and their installation.

packages_for() {
    case $1 in
        native)
            echo cmake ninja-build ccache g++ googletest libcli11-dev nlohmann-json3-dev libmimalloc-dev libre2-dev libsqlite3-dev \
                zlib1g-dev python3 unzip libxml2-utils mono-mcs mono-runtime
            ;;
        clang) echo cmake ninja-build ccache clang g++ googletest libcli11-dev nlohmann-json3-dev libsqlite3-dev zlib1g-dev ;;
        fuzz) echo cmake ninja-build ccache clang libclang-rt-14-dev g++ libcli11-dev nlohmann-json3-dev libsqlite3-dev zlib1g-dev ;;
        windows) echo cmake ninja-build ccache g++ googletest libcli11-dev nlohmann-json3-dev g++-mingw-w64-x86-64-posix \
                libz-mingw-w64-dev wine wine64 llvm ;;
        packages) echo binutils make pkgconf gdb dpkg-dev file zip unzip g++-mingw-w64-x86-64-posix clang lld llvm lintian ;;
        bench)
            echo python3 libbenchmark-dev libpugixml-dev libtinyxml2-dev libexpat1-dev libxml2-dev \
                libicu-dev libfmt-dev libspdlog-dev
            ;;
        analysis) echo cmake ninja-build ccache clang clang-tidy cppcheck googletest libcli11-dev nlohmann-json3-dev libre2-dev libsqlite3-dev zlib1g-dev ;;
        style) echo clang-format git ;;
        large) echo ansible-core lnav systemd systemd-journal-remote chromium poppler-utils ;;
        shells) echo zsh fish mandoc bsdextrautils ;;
        *) echo "unknown purpose '$1'" >&2; return 2 ;;
    esac
}

package_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# Installs missing packages of the given purposes. Prints nothing when none is missing.
require_packages() {
    local purpose package names missing=()
    command -v dpkg-query >/dev/null || return 0
    for purpose in "$@"; do
        names=$(packages_for "$purpose") || return
        for package in $names; do
            package_installed "$package" || missing+=("$package")
        done
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "installing: ${missing[*]}"
    as_root apt-get -q update >/dev/null &&
        DEBIAN_FRONTEND=noninteractive as_root apt-get -q install -y --no-install-recommends \
            "${missing[@]}" >/dev/null
}
