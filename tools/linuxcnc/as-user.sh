#!/usr/bin/env bash
# Runs a command as an ordinary user, since LinuxCNC does not run as root: as who we are, or, as root,
# as "nobody" with a folder of its own for everything that it writes.
#
#   tools/linuxcnc/as-user.sh FOLDER COMMAND...
#
# FOLDER is made; HOME and the folders of settings, logs and message windows lie in it.
set -euo pipefail
folder=$1
shift
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
as=()
if [ "$(id -u)" = 0 ]; then
    as=(setpriv --reuid=65534 --regid=65534 --clear-groups)
    chown 65534:65534 "$folder"
fi
chmod 700 "$folder"
"${as[@]}" test -r "$(cd "$(dirname "$0")" && pwd)/start.sh" ||
    { echo "as-user.sh: an ordinary user cannot read $(dirname "$0")" >&2; exit 77; }
export HOME=$folder XDG_RUNTIME_DIR=$folder XDG_DATA_HOME=$folder/data XDG_STATE_HOME=$folder/state \
    XDG_CONFIG_HOME=$folder/config
exec "${as[@]}" "$@"
