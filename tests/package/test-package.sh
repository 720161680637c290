#!/usr/bin/env bash
# Tries the Debian packages: builds zyhelpeditor and zyhelp-tools in BUILD_DIR
# with cpack, checks them with lintian, their fields and their files
# (PACKAGE.files beside this script). With --lint-only (CTest test
# package_lint) that is all. Otherwise it then installs both with apt-get,
# checks that each program starts headless and has its manual page and that a
# desktop finds the editor's entry, icon, metainfo and file types, purges both
# and checks that nothing of them is left. That changes the system it runs on,
# so it runs as root in a root made for tests: scripts/test-forky.sh runs it in
# the forky root after the tests. The packages are purged on every exit path.
#
#   test-package.sh [--lint-only] BUILD_DIR
set -euo pipefail

lint_only=0
[ "${1:-}" != --lint-only ] || { lint_only=1; shift; }
build="$(cd "$1" && pwd)"
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
packages=(zyhelpeditor zyhelp-tools)
programs=(zyhelpeditor zyhelpcheck zyhelptranslate zyhelppublish)
export DEBIAN_FRONTEND=noninteractive

log() { echo "test-package: $*"; }
fail() { echo "test-package: $*" >&2; exit 1; }

state() { dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null || echo not-installed; }
any_present() {
    local p
    for p in "${packages[@]}"; do
        [ "$(state "$p")" = not-installed ] || return 0
    done
    return 1
}
purge() { apt-get purge -y -qq -o Dpkg::Use-Pty=0 "${packages[@]}" >/dev/null; }

# What dpkg and apt keep for themselves, logs, caches (man-db's index too) and
# what is mounted for the tests are left out; everything else is listed.
snapshot() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp \
        -o -path /src -o -path /build -o -path "$build" -o -path /var/log -o -path /var/cache \
        -o -path /var/lib/dpkg -o -path /var/lib/apt \) -prune -o -print | sort
}

start=$SECONDS
rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB >cpack.log 2>&1) ||
    { cat "$build/cpack.log" >&2; fail "cpack -G DEB failed"; }
version="$(sed -n 's/^set(CPACK_PACKAGE_VERSION "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")"
declare -A deb
for p in "${packages[@]}"; do
    deb[$p]="$build/${p}_${version}_$(dpkg --print-architecture).deb"
    [ -f "${deb[$p]}" ] || fail "cpack made no $(basename "${deb[$p]}")"
done
made="$(cd "$build" && printf '%s\n' *.deb | sort | xargs)"
[ "$made" = "$(printf '%s\n' "${deb[@]##*/}" | sort | xargs)" ] || fail "cpack made $made"
log "built $made in $((SECONDS - start)) s"

if ! out="$(lintian --fail-on error,warning "${deb[@]}" 2>&1)"; then
    grep -E '^[EW]: ' <<<"$out" >&2 || echo "$out" >&2
    fail "lintian finds errors or warnings (above)"
fi

field() { dpkg-deb -f "${deb[$1]}" "$2"; }
# The dependencies come from the libraries the programs link (dpkg-shlibdeps);
# a library's package name may go on (libqt6core6t64).
has() {   # has PACKAGE FIELD ERE: some entry of the field starts with ERE
    grep -qE "(^|, )($3)" <<<"$(field "$1" "$2")"
}
for p in "${packages[@]}"; do
    [ "$(field "$p" Package)" = "$p" ] || fail "package name is '$(field "$p" Package)', not $p"
    [ "$(field "$p" Version)" = "$version" ] || fail "$p's version is '$(field "$p" Version)'"
    files="$(dpkg-deb -c "${deb[$p]}" | awk '$6 !~ /\/$/ { print substr($6, 2) }' | LC_ALL=C sort)"
    diff -u "$here/$p.files" - <<<"$files" >&2 || fail "$p holds other files than $p.files (above)"
done
for dep in 'libc6 ' 'libstdc\+\+6 ' libqt6core6 libqt6widgets6; do
    has zyhelpeditor Depends "$dep" || fail "zyhelpeditor does not depend on $dep"
done
! has zyhelpeditor Depends zyhelp-tools || fail "zyhelpeditor depends on zyhelp-tools"
has zyhelpeditor Recommends qt6-translations-l10n ||
    fail "zyhelpeditor does not recommend qt6-translations-l10n"
for dep in 'libc6 ' libqt6core6; do
    has zyhelp-tools Depends "$dep" || fail "zyhelp-tools does not depend on $dep"
done
gui='libqt6(gui|widgets|opengl)|libgl1|libegl|libopengl|libx11|libxcb|libwayland'
! has zyhelp-tools Depends "$gui" ||
    fail "zyhelp-tools depends on a GUI library: $(field zyhelp-tools Depends)"
has zyhelp-tools Recommends qt6-documentation-tools ||
    fail "zyhelp-tools does not recommend qt6-documentation-tools"
log "lintian finds no error or warning; fields and files as expected"

[ "$lint_only" = 0 ] || exit 0
[ "$(id -u)" -eq 0 ] || fail "must run as root, in a root made for tests (scripts/test-forky.sh)"

# A run that was stopped before its cleanup may have left a package behind.
if any_present; then
    log "purging the packages a stopped run left installed"
    purge
fi
before="" after=""
cleanup() {
    local status=$?
    rm -f "$before" "$after"
    if any_present; then purge || echo "test-package: could not purge ${packages[*]}" >&2; fi
    exit $status
}
trap cleanup EXIT

# The id is the one the desktop entry in the package is named after.
id="$(sed -n 's|^/usr/share/applications/\(.*\)\.desktop$|\1|p' "$here/zyhelpeditor.files")"
before="$(mktemp)" after="$(mktemp)"
snapshot >"$before"

# Everything the packages need is on the system already: apt must install
# nothing else (and so download nothing).
plan="$(apt-get install -s "${deb[@]}" 2>&1 | sed -n 's/^Inst \([^ ]*\) .*/\1/p' | sort | xargs)"
[ "$plan" = "$(printf '%s\n' "${packages[@]}" | sort | xargs)" ] ||
    fail "apt-get would install other packages than ${packages[*]}: $plan"
apt-get install -y -qq -o Dpkg::Use-Pty=0 "${deb[@]}" >/dev/null || fail "apt-get install failed"
for p in "${packages[@]}"; do
    [ "$(state "$p")" = installed ] || fail "$p is $(state "$p") after apt-get install"
done

for p in "${programs[@]}"; do
    [ "$(command -v "$p")" = "/usr/bin/$p" ] || fail "$p is not /usr/bin/$p"
    out="$(QT_QPA_PLATFORM=offscreen "$p" --version 2>/dev/null)" || fail "$p --version failed"
    [ "$out" = "$p $version" ] || fail "$p --version printed '$out'"
    # man finds the page by the program's name; the page holds what --help says
    # of project files. (groff may show a dash as a minus sign.)
    page="$(man -P cat "$p" 2>/dev/null)" || fail "man $p failed"
    grep -qE "^ +$p +[^ [:alnum:]]+ +[[:alnum:]]" <<<"$page" ||
        fail "man $p shows no NAME line: $(head -n 5 <<<"$page")"
    grep -qF "(.zyproject" <<<"$page" || fail "man $p lacks the text of its --help"
done
# The triggers of the desktop and mime databases took the new types in.
for type in application/x-zyproject+xml application/x-zyhelp+xml; do
    grep -q "^$type=.*$id\.desktop" /usr/share/applications/mimeinfo.cache ||
        fail "mimeinfo.cache does not open $type with $id.desktop"
done
grep -qx '50:application/x-zyproject+xml:\*\.zyproject' /usr/share/mime/globs2 ||
    fail "the mime database does not know *.zyproject"
grep -qx '50:application/x-zyhelp+xml:\*\.zyhelp' /usr/share/mime/globs2 ||
    fail "the mime database does not know *.zyhelp"
grep -qx ' zyproject application/x-zyproject+xml' /usr/share/mime/XMLnamespaces ||
    fail "the mime database does not know the root element zyproject"
log "installed: ${programs[*]} with --version and man page; the desktop's files and types"

purge || fail "apt-get purge failed"
! any_present || fail "a package is still there after apt-get purge"
snapshot >"$after"
if ! diff -u "$before" "$after" >&2; then
    fail "the system differs after the purge (above)"
fi
left="$(grep -rlE "$id|x-zyproject|x-zyhelp" /usr/share/applications /usr/share/mime \
    /usr/share/icons /usr/share/metainfo /etc 2>/dev/null || true)"
[ -z "$left" ] || fail "still mentioned after the purge: $left"
log "purged: nothing of ${packages[*]} is left ($((SECONDS - start)) s in all)"
