#!/usr/bin/env bash
# Runs a command where no other uses Wine at the same time, waiting for such a place:
#
#   tools/windows/wine-place.sh wine PROGRAM ARG...
#
# The places are those of with-wine.sh, under which this runs; without it the command just runs.
set -eu
if [ -z "${WAVO_WINE_FOLDER:-}" ]; then
    exec "$@"
fi
while :; do
    for folder in "$WAVO_WINE_FOLDER"/place*; do
        exec 8>"$folder/.wavo-in-use"
        if flock -n 8; then
            # What the command leaves running, a server say, does not keep the place.
            status=0
            WINEPREFIX=$folder DISPLAY=:$(cat "$folder/.display") "$@" 8>&- || status=$?
            exit $status
        fi
    done
    sleep 0.1
done
