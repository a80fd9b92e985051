# Installs Debian packages that are missing. Sourced by ./demo, ./test and bench/run.
#
#   install_packages <what for> <package>...
#
# Says what it does. Needs root or sudo only when something is missing.

install_packages() {
    local purpose=$1 package missing=()
    shift
    if ! command -v dpkg-query >/dev/null 2>&1; then
        echo "This is not a Debian system: please see to it yourself that these are there: $*"
        return 0
    fi
    for package in "$@"; do
        if ! dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed; then
            missing+=("$package")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "Missing to $purpose: ${missing[*]}" >&2
            echo "Please install them as root: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "==> Installing what is missing to $purpose: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

packages_to_build=(g++ cmake ninja-build qt6-base-dev zlib1g-dev libeigen3-dev libmuparser-dev)
packages_to_run=(fonts-dejavu-core)
packages_to_test=(libgtest-dev libgmock-dev clang-format-14 locales nodejs poppler-utils python3)
packages_to_cross_build=(g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix libz-mingw-w64-dev googletest
    nsis dpkg-dev xz-utils)
packages_to_package_windows=(python3)
packages_to_run_windows=(wine wine64 fonts-wine xvfb xauth)
# Only where Qt for Windows has to be built.
packages_to_build_qt=(dpkg-dev perl python3 xz-utils)
# What reads the screen aloud, and a display of its own.
packages_to_test_access=(at-spi2-core dbus gir1.2-atspi-2.0 python3-gi xvfb)
packages_to_lint=(clang-format-14 clang-tidy-14)
packages_to_interoperate=(nodejs npm)
packages_to_fuzz=(clang-14 libclang-rt-14-dev)
packages_to_run_linuxcnc=(linuxcnc-uspace linuxcnc-uspace-dev python3 util-linux)
packages_to_package=(cpio debhelper dpkg-dev fakeroot linuxcnc-uspace-dev python3)
packages_to_make_manual=(fonts-dejavu-core pandoc python3 weasyprint)
packages_to_check_packages=(mmdebstrap)
packages_to_test_packages=(appstream desktop-file-utils devscripts libxml2-utils lintian man-db poppler-utils)
packages_to_bench=(libbenchmark-dev libboost-dev libfftw3-dev libhdf5-dev libqcustomplot-dev libsimpleini-dev python3
    python3-numpy python3-scipy)
