#!/usr/bin/env bash
# Sees to it that build/muparser-windows holds a static muParser for Windows of the host's version,
# built from Debian's own source package. Without OpenMP, which needs a file of its own and starts
# threads. Takes some seconds, and is kept in ~/.cache/wavo.
set -euo pipefail
cd "$(dirname "$0")/../.."
tools=$PWD/tools/windows
. "$tools/debian-source.sh"
place=$PWD/build/muparser-windows
mkdir -p build

complete() { [ -e "$1/lib/libmuparser.a" ] && [ -e "$1/.wavo-complete" ]; }

version=$(dpkg-query -W -f '${source:Version}' libmuparser-dev)
if complete "$place" && [ "$(cat "$place/.wavo-complete")" = "$version" ]; then
    exit 0
fi
kept=${XDG_CACHE_HOME:-$HOME/.cache}/wavo/muparser-windows-$version
if ! complete "$kept"; then
    echo "==> Building muParser $version for Windows, once; it will be kept in $kept"
    mkdir -p "$(dirname "$kept")"
    work=$(mktemp -d "$(dirname "$kept")/building.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    debian_source muparser "$version" "$work" >"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; exit 1; }
    {
        cmake -S "$work/source" -B "$work/build" -G Ninja -Wno-dev \
            -DCMAKE_TOOLCHAIN_FILE="$tools/mingw.cmake" -DCMAKE_INSTALL_PREFIX="$work/muparser" \
            -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
            -DENABLE_OPENMP=OFF -DENABLE_SAMPLES=OFF -DBUILD_TESTING=OFF
        cmake --build "$work/build"
        cmake --install "$work/build"
    } >>"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; exit 1; }
    printf '%s\n' "$version" >"$work/muparser/.wavo-complete"
    rm -rf "$kept"
    mv "$work/muparser" "$kept"
fi
rm -rf "$place"
ln -s "$kept" "$place"
