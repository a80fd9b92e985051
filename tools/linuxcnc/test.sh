#!/usr/bin/env bash
# Runs the tests with a running controller, as an ordinary user.
#
#   tools/linuxcnc/test.sh <build folder>
#
# Exit status 77: a controller cannot run here.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$1
longest=240 # seconds

# Paths of sockets are short.
folder=$(mktemp -d /tmp/wavo-cnc.XXXXXX)
trap 'rm -rf "$folder"' EXIT
tools/linuxcnc/as-user.sh "$folder" tools/linuxcnc/start.sh --check ||
    { echo "LINUXCNC WAS NOT TESTED: no controller can run here" >&2; exit 77; }
echo "==> Testing with a running controller"
result=0
tools/linuxcnc/as-user.sh "$folder" env QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=default.warning=false \
    timeout $longest "$build/tests/linuxcnc/test_linuxcnc" || result=$?
exit $result
