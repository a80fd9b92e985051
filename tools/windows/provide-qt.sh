#!/usr/bin/env bash
# Sees to it that build/qt-windows holds a static Qt for Windows of the host's Qt version.
#
# WAVO_QT_WINDOWS=<file>.tar.xz   an archive of such a Qt, with one folder in it: it is unpacked
# without it                      Qt is built from Debian's own source package, which takes some
#                                 25 minutes on two cores, and kept in ~/.cache/wavo
# WAVO_QT_SAVE=<file>.tar.xz      where to pack the Qt that was built, for other machines
set -euo pipefail
cd "$(dirname "$0")/../.."
tools=$PWD/tools/windows
. "$tools/debian-source.sh"
place=$PWD/build/qt-windows
mkdir -p build

complete() { [ -e "$1/lib/libQt6Widgets.a" ] && [ -e "$1/.wavo-complete" ]; }

# The version that the CMake files of a Qt tell, empty when there are none.
cmake_version() {
    sed -n 's/^set(PACKAGE_VERSION "\([0-9.]*\)").*/\1/p' "$1"/Qt6ConfigVersion*.cmake 2>/dev/null |
        head -n 1 || true
}
# moc, rcc and uic are the host's, and fit the Qt of their own version only.
version=$(dpkg-query -W -f '${source:Version}' qt6-base-dev)
host_version=${version#*:}
host_version=${host_version%%[+-]*}
require_host_version() {
    local found
    found=$(cmake_version "$1/lib/cmake/Qt6")
    [ "$found" = "$host_version" ] && return
    echo "$2 holds Qt ${found:-of no known version}, the host has Qt $host_version: $3" >&2
    exit 1
}

if [ -n "${WAVO_QT_WINDOWS:-}" ]; then
    [ -f "$WAVO_QT_WINDOWS" ] || { echo "WAVO_QT_WINDOWS: no such file: $WAVO_QT_WINDOWS" >&2; exit 1; }
    stamp=$(stat -c '%n %s %Y' "$WAVO_QT_WINDOWS")
    advice="make a new archive with WAVO_QT_SAVE"
    if complete "$place" && [ "$(cat "$place/.wavo-complete")" = "$stamp" ]; then
        require_host_version "$place" "$WAVO_QT_WINDOWS" "$advice"
        exit 0
    fi
    echo "==> Unpacking Qt for Windows from $WAVO_QT_WINDOWS"
    rm -rf "$place.new"
    mkdir "$place.new"
    tar -C "$place.new" --strip-components=1 -xf "$WAVO_QT_WINDOWS"
    require_host_version "$place.new" "$WAVO_QT_WINDOWS" "$advice"
    printf '%s\n' "$stamp" >"$place.new/.wavo-complete"
    rm -rf "$place"
    mv "$place.new" "$place"
    exit 0
fi

if complete "$place"; then
    [ "$(cmake_version "$place/lib/cmake/Qt6")" = "$host_version" ] && exit 0
    echo "==> build/qt-windows is of another version than the host's Qt $host_version"
fi
kept=${XDG_CACHE_HOME:-$HOME/.cache}/wavo/qt-windows-$version
if ! complete "$kept"; then
    echo "==> Building Qt $version for Windows, once; it will be kept in $kept"
    mkdir -p "$(dirname "$kept")"
    work=$(mktemp -d "$(dirname "$kept")/building.XXXXXX")
    trap 'rm -rf "$work"' EXIT

    debian_source qt6-base "$version" "$work"

    # Nothing from outside, nothing that the viewer does not use. direct2d itself stays: without
    # it this version leaves DirectWrite's half out and nothing links. The tablet's header is
    # not in Debian's package.
    options=()
    for feature in androiddeployqt concurrent dbus direct2d1_1 fontconfig glib icu network \
        pkg_config sql tabletevent vulkan xml zstd system_doubleconversion system_freetype \
        system_harfbuzz system_jpeg system_libb2 system_pcre2 system_png system_zlib; do
        options+=("-DFEATURE_$feature=OFF")
    done
    cmake -S "$work/source" -B "$work/build" -G Ninja -Wno-dev \
        -DCMAKE_TOOLCHAIN_FILE="$tools/mingw.cmake" -DCMAKE_INSTALL_PREFIX="$work/qt" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DQT_QMAKE_TARGET_MKSPEC=win32-g++ \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DFEATURE_static_runtime=ON \
        -DFEATURE_relocatable=ON -DINPUT_opengl=no "${options[@]}" >"$work/configure.log" 2>&1 ||
        { tail -n 40 "$work/configure.log" >&2; exit 1; }
    cmake --build "$work/build"
    cmake --install "$work/build" >/dev/null
    printf 'built %s\n' "$version" >"$work/qt/.wavo-complete"
    rm -rf "$kept"
    mv "$work/qt" "$kept"
fi
rm -rf "$place"
ln -s "$kept" "$place"
if [ -n "${WAVO_QT_SAVE:-}" ]; then
    tar -C "$(dirname "$kept")" --exclude=.wavo-complete -cJf "$WAVO_QT_SAVE" "$(basename "$kept")"
fi
