#!/usr/bin/env bash
# Installs packages in a bare Debian 12, runs what is in them, removes and purges them, and looks for
# what they left behind:
#
#   tools/debian/try-packages.sh FOLDER
#
# As root: the bare Debian is a folder that programs see as their whole file system.
set -euo pipefail
packages=$(realpath "$1")
[ "$(id -u)" = 0 ] || { echo "try-packages: only root can do that" >&2; exit 1; }
root=$(mktemp -d)
mounted=
clean_up() {
    [ -z "$mounted" ] || umount -R "$root/proc" "$root/dev" || true
    rm -rf --one-file-system "$root" "$root".*
}
trap clean_up EXIT
fail() { echo "try-packages: $*" >&2; exit 1; }

echo "A bare Debian 12"
mmdebstrap --variant=minbase --quiet bookworm "$root" >/dev/null
mount -t proc proc "$root/proc"
mount --rbind --make-rslave /dev "$root/dev"
mounted=yes
# The names of segments in there are its own.
mount -t tmpfs tmpfs "$root/dev/shm"
mkdir "$root/packages"
cp "$packages"/wavo_*.deb "$packages"/wavo-masters_*.deb "$packages"/wavo-dev_*.deb "$root/packages"
inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root \
        DEBIAN_FRONTEND=noninteractive QT_QPA_PLATFORM=offscreen sh -ec "$1"
}
everything() { (cd "$root" && find . -xdev \( -path ./proc -o -path ./dev \) -prune -o -print | sort); }
inside 'apt-get update -qq'
everything >"$root.before"

echo "Installing"
inside 'apt-get install -y -qq --no-install-recommends /packages/*.deb' >"$root.log" 2>&1 ||
    fail "$(tail "$root.log")"
inside 'dpkg -L wavo wavo-masters wavo-dev' | sort -u >"$root.files"

echo "Running"
inside '
    cd /root
    demo_master --recording /usr/share/wavo/recordings/circle_xy_r50.csv.gz --loop 0 >master.log &
    master=$!
    wavo_record --for 2s --out kept --quiet
    wavo_record --verify kept.mcap
    timeout 60 wavo --screenshot seen.png --after-lines 500 /usr/share/wavo/graphs/circle.ini
    kill $master
    wait $master
    gzip -dc /usr/share/wavo/recordings/circle_xy_r50.csv.gz >circle.csv
    wavo_report circle circle.csv --axes X,Y --out circle.pdf >/dev/null
    seq 100 | wavo_pipe --axes X --cycle 0.001
    test -s seen.png && test -s circle.pdf && test -s kept.mcap
    ! wavo_linuxcnc --version 2>missing
    grep -q liblinuxcnchal missing
' || fail "something does not run"

echo "Removing and purging"
inside 'apt-get remove -y -qq wavo wavo-masters wavo-dev &&
    dpkg --purge wavo wavo-masters wavo-dev &&
    apt-get autoremove --purge -y -qq' >"$root.log" 2>&1 || fail "$(tail "$root.log")"
everything >"$root.after"
# Folders of the system stay; files of ours, and anything with our name, do not. What stands below
# /root the user has made, and /tmp does not outlast the computer's next start.
left=$(comm -13 "$root.before" "$root.after" | grep -vE '^\./(root|tmp)/' | grep -i wavo || true)
left+=$(sed 's/^/./' "$root.files" | while read -r file; do
    [ -d "$root/$file" ] || [ ! -e "$root/$file" ] || echo "$file"
done)
[ -z "$left" ] || fail "left behind: $left"
echo "try-packages: installed, ran, and left nothing behind"
