#!/usr/bin/env bash
# Second test leg: builds from scratch and runs every test headless on Debian
# forky (a newer Qt, g++ and CMake than Debian 12's), inside a debootstrap root.
# Run as root. The root is kept in /var/cache/zyhelpeditor/forky-root (outside
# the clone) and reused; it is made anew when missing or incomplete.
#
# Environment:
#   ZY_FORKY_CACHE   folder that holds the root (default /var/cache/zyhelpeditor)
#   ZY_FORKY_MIRROR  Debian mirror (default http://deb.debian.org/debian)
#   ZY_FORKY_REBUILD=1  make the root anew even when the cached one is fine
set -euo pipefail

src="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cache="${ZY_FORKY_CACHE:-/var/cache/zyhelpeditor}"
root="$cache/forky-root"
mirror="${ZY_FORKY_MIRROR:-http://deb.debian.org/debian}"
suite=forky
marker=.zy-forky-ready

# Everything scripts/setup.sh asks for, so it finds nothing missing in the root
# (the root has no network use after it is made), plus fonts for widget tests,
# the mime database, whose trigger the package test watches, and man-db, with
# which it reads an installed manual page.
packages=(
    cmake g++ make
    qt6-base-dev qt6-base-dev-tools libgl-dev
    xvfb xauth
    qt6-translations-l10n
    desktop-file-utils appstream libxml2-utils
    dpkg-dev file help2man lintian
    gettext translate-toolkit
    qt6-documentation-tools qt6-tools-dev libqt6sql6-sqlite
    linkchecker tidy chromium-headless-shell
    fonts-dejavu-core
    shared-mime-info
    man-db
    # debootstrap does not resolve virtual packages: lintian's Perl needs
    # perl-openssl-abi-3, which this one provides.
    perl-openssl-defaults
)
package_list="$(IFS=,; echo "${packages[*]}")"

log() { echo "test-forky: $*"; }
die() { echo "test-forky: $*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || die "must run as root (debootstrap, mount and chroot need it)"

# --- mounts ---------------------------------------------------------------

# Mount points at or below $1, deepest first (from /proc/mounts).
mounts_under() {
    local dir
    dir="$(realpath -m "$1")"
    awk -v d="$dir" '{ gsub(/\\040/, " ", $2); if ($2 == d || index($2, d "/") == 1) print $2 }' /proc/mounts |
        awk '{ print length($0) "\t" $0 }' | sort -rn | cut -f2-
}

# Unmounts everything at or below $1; fails if anything stays mounted.
unmount_all_under() {
    local dir="$1" m
    [ -e "$dir" ] || return 0
    while IFS= read -r m; do
        [ -n "$m" ] || continue
        umount "$m" 2>/dev/null || umount -l "$m" 2>/dev/null || true
    done < <(mounts_under "$dir")
    if [ -n "$(mounts_under "$dir")" ]; then
        echo "test-forky: still mounted below $dir:" >&2
        mounts_under "$dir" >&2
        return 1
    fi
}

# Deletes a root folder, but never while anything is mounted in it: that would
# delete what is mounted (the source tree, /proc, ...).
remove_root() {
    local dir="$1"
    [ -e "$dir" ] || return 0
    unmount_all_under "$dir" || die "refusing to delete $dir: something is still mounted in it"
    rm -rf --one-file-system "$dir"
}

# Long commands run as a child that the script waits for, so that a signal
# reaches the traps at once instead of after the command.
child=""
run_child() {
    local status=0
    "$@" 9>&- & # the lock stays with this script, not with what it starts
    child=$!
    wait "$child" || status=$?
    child=""
    return "$status"
}

# Process ids whose parent is $1 (from /proc, so no procps is needed).
children_of() {
    local stat rest
    for stat in /proc/[0-9]*/stat; do
        rest="$(cat "$stat" 2>/dev/null)" || continue
        rest="${rest##*) }" # after the command name: state ppid ...
        rest="${rest#* }"
        [ "${rest%% *}" = "$1" ] && { stat="${stat#/proc/}"; echo "${stat%/stat}"; }
    done
    return 0
}

# Ends a process and everything it started, by process id.
kill_tree() {
    local pid="$1" c
    kill -STOP "$pid" 2>/dev/null || return 0
    for c in $(children_of "$pid"); do
        kill_tree "$c"
    done
    kill -TERM "$pid" 2>/dev/null || true
    kill -CONT "$pid" 2>/dev/null || true
}

# Kills what still runs inside a root (its /proc/PID/root points there).
kill_in_root() {
    local dir pid_dir
    dir="$(realpath -m "$1")"
    for pid_dir in /proc/[0-9]*; do
        [ "$(readlink "$pid_dir/root" 2>/dev/null)" = "$dir" ] && kill -KILL "${pid_dir#/proc/}" 2>/dev/null
    done
    return 0
}

mounted=()
cleanup() {
    local status=$? i
    trap - EXIT INT TERM ERR
    if [ -n "$child" ]; then
        kill_tree "$child"
        sleep 1
        wait "$child" 2>/dev/null || true
    fi
    if [ "$locked" = 1 ]; then
        [ -z "$tmp" ] || kill_in_root "$tmp"
        kill_in_root "$root"
    fi
    for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
        umount "${mounted[i]}" 2>/dev/null || umount -l "${mounted[i]}" 2>/dev/null ||
            echo "test-forky: could not unmount ${mounted[i]}" >&2
    done
    mounted=()
    # Anything left (e.g. by an interrupted debootstrap) goes too, but only
    # while this run holds the lock: otherwise the mounts are another run's.
    if [ "$locked" = 1 ]; then
        [ -z "$tmp" ] || unmount_all_under "$tmp" || true
        unmount_all_under "$root" || true
    fi
    exit "$status"
}
tmp=""
locked=0
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
trap 'exit $?' ERR

mount_in_root() {   # mount_in_root TARGET MOUNT-ARGS...
    local target="$1"
    shift
    mkdir -p "$target"
    mount "$@" "$target"
    mounted+=("$target")
}

# --- the root -------------------------------------------------------------

in_root() {
    chroot "$1" /usr/bin/env -i HOME=/root LANG=C.UTF-8 \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "${@:2}"
}

# Checks that a root holds everything the build needs; prints what is wrong.
verify_root() {
    local dir="$1" p
    [ -x "$dir/usr/bin/env" ] || { echo "no /usr/bin/env"; return 1; }
    in_root "$dir" sh -c 'command -v cmake && command -v g++ && command -v make && command -v qmake6 && command -v ctest' \
        >/dev/null || { echo "cmake, g++, make, qmake6 or ctest missing"; return 1; }
    compgen -G "$dir/usr/lib/*/cmake/Qt6/Qt6Config.cmake" >/dev/null || { echo "no Qt6Config.cmake"; return 1; }
    compgen -G "$dir/usr/lib/*/cmake/Qt6Test/Qt6TestConfig.cmake" >/dev/null || { echo "no Qt6TestConfig.cmake"; return 1; }
    for p in "${packages[@]}"; do
        in_root "$dir" dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
            { echo "package $p not installed"; return 1; }
    done
    [ -c "$dir/dev/null" ] || { echo "no /dev/null"; return 1; }
}

root_ready() {
    [ -f "$root/$marker" ] || return 1
    [ "$(sed -n 's/^packages=//p' "$root/$marker")" = "$package_list" ] || return 1
    local why
    why="$(verify_root "$root")" || { log "cached root is broken ($why)"; return 1; }
}

make_root() {
    local attempt script=/usr/share/debootstrap/scripts/sid
    if ! command -v debootstrap >/dev/null || [ ! -f "$script" ]; then
        log "installing debootstrap"
        export DEBIAN_FRONTEND=noninteractive
        apt-get update -qq || log "apt-get update failed; trying the install with the lists at hand"
        apt-get install -y -qq --no-install-recommends debootstrap
    fi
    # The temporary folder sits next to the cached root, so moving it in place
    # is a rename on one file system.
    tmp="$cache/forky-root.new"
    for attempt in 1 2; do
        remove_root "$tmp"
        log "making the $suite root in $tmp (attempt $attempt)"
        if run_child debootstrap --variant=minbase --include="$package_list" \
            "$suite" "$tmp" "$mirror" "$script"; then
            break
        fi
        [ "$attempt" -lt 2 ] || { unmount_all_under "$tmp" || true; die "debootstrap failed"; }
    done
    unmount_all_under "$tmp" || die "debootstrap left mounts in $tmp"
    mkdir -p "$tmp/dev/shm" "$tmp/src" "$tmp/build"
    chmod 1777 "$tmp/dev/shm"
    local why
    why="$(verify_root "$tmp")" || die "the new root is incomplete: $why"
    {
        echo "packages=$package_list"
        echo "made=$(date -u +%Y-%m-%dT%H:%M:%SZ)"
        echo "mirror=$mirror"
    } > "$tmp/$marker"
    remove_root "$root"
    mv "$tmp" "$root"
    tmp=""
}

# --- main -----------------------------------------------------------------

mkdir -p "$cache"
# One run at a time per machine: runs share the root and its /build.
exec 9> "$cache/forky.lock"
if ! flock -n 9; then
    log "waiting for another run to finish"
    flock 9
fi
locked=1

# Leftovers of a run that was killed before its cleanup.
kill_in_root "$root"
unmount_all_under "$root" || die "cannot unmount what a previous run left in $root"

start=$SECONDS
if [ "${ZY_FORKY_REBUILD:-}" = 1 ] || ! root_ready; then
    make_root
    log "root made in $((SECONDS - start)) s"
else
    log "reusing the root in $root (checked in $((SECONDS - start)) s)"
fi

qt_version="$(in_root "$root" qmake6 -query QT_VERSION 2>/dev/null ||
    in_root "$root" dpkg-query -W -f='${Version}' qt6-base-dev)"
log "== Debian $suite $(cat "$root/etc/debian_version"), Qt $qt_version," \
    "$(in_root "$root" g++ --version | head -n1)," \
    "$(in_root "$root" cmake --version | head -n1) =="

# The XLIFF schema comes from the host: the root has no network use.
bash "$src/scripts/fetch-xliff-schema.sh"
rm -rf "$root/var/cache/zyhelpeditor/xliff-1.2"
mkdir -p "$root/var/cache/zyhelpeditor"
cp -r /var/cache/zyhelpeditor/xliff-1.2 "$root/var/cache/zyhelpeditor/"

mount_in_root "$root/proc" -t proc proc
mount_in_root "$root/src" --bind "$src"
mount -o remount,bind,ro "$root/src"
if touch "$root/src/.zy-write-test" 2>/dev/null; then
    rm -f "$root/src/.zy-write-test"
    die "the source folder is writable inside the root"
fi

run_child in_root "$root" env CI="${CI:-}" BUILD_DIR=/build bash /src/scripts/test.sh --plain
# The root is the clean system the package is tried on: built against its Qt,
# installed, checked and removed again, leaving the root as it was.
run_child in_root "$root" bash /src/tests/package/test-package.sh /build
log "forky leg passed (Qt $qt_version)"
