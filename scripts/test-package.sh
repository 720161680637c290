#!/usr/bin/env bash
# Tries the Debian package on a clean system: builds it in BUILD_DIR with cpack,
# installs it with apt-get, checks that the program starts headless and that a
# desktop finds its entry, icon, metainfo and file types, then purges it and
# checks that nothing of it is left. Changes the system it runs on, so it runs
# as root in a root made for tests: scripts/test-forky.sh runs it in the forky
# root after the tests. The package is purged on every exit path.
#
#   test-package.sh BUILD_DIR
set -euo pipefail

build="$(cd "$1" && pwd)"
name=zyhelpeditor
export DEBIAN_FRONTEND=noninteractive

log() { echo "test-package: $*"; }
fail() { echo "test-package: $*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || fail "must run as root, in a root made for tests (scripts/test-forky.sh)"

installed() {
    case "$(dpkg-query -W -f='${Status}' "$name" 2>/dev/null || true)" in
        "" | *not-installed) return 1 ;;
        *) return 0 ;;
    esac
}
purge() { apt-get purge -y -qq -o Dpkg::Use-Pty=0 "$name" >/dev/null; }

# What dpkg and apt keep for themselves, logs, and what is mounted for the
# tests are left out; everything else on the system is listed.
snapshot() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp \
        -o -path /src -o -path /build -o -path "$build" -o -path /var/log -o -path /var/cache \
        -o -path /var/lib/dpkg -o -path /var/lib/apt \) -prune -o -print | sort
}

# A run that was stopped before its cleanup may have left the package behind.
if installed; then
    log "purging the package a stopped run left installed"
    purge
fi
trap 'status=$?; if installed; then purge || echo "test-package: could not purge $name" >&2; fi; exit $status' EXIT

start=$SECONDS
rm -f "$build/${name}"_*.deb
(cd "$build" && cpack -G DEB >cpack.log 2>&1) || { cat "$build/cpack.log" >&2; fail "cpack -G DEB failed"; }
debs=("$build/${name}"_*.deb)
[ ${#debs[@]} -eq 1 ] && [ -f "${debs[0]}" ] || fail "cpack made no single ${name}_*.deb"
deb="${debs[0]}"
version="$(sed -n 's/^set(CPACK_PACKAGE_VERSION "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")"
log "built $(basename "$deb") in $((SECONDS - start)) s"

field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = "$name" ] || fail "package name is '$(field Package)'"
[ "$(field Version)" = "$version" ] || fail "package version is '$(field Version)', not $version"
[ -n "$(field Maintainer)" ] || fail "no maintainer"
[ -n "$(field Description)" ] || fail "no description"
# The dependencies come from the libraries the binaries link (dpkg-shlibdeps);
# a package name may go on (libqt6core6t64).
depends=", $(field Depends)"
for dep in "libc6 " "libstdc++6 " libqt6core6 libqt6widgets6; do
    grep -qF ", $dep" <<<"$depends" || fail "Depends lacks $dep: $(field Depends)"
done
field Recommends | grep -q qt6-translations-l10n || fail "does not recommend qt6-translations-l10n"

# The id is the one the desktop entry in the package is named after.
id="$(dpkg-deb -c "$deb" | sed -n 's|.*\./usr/share/applications/\(.*\)\.desktop$|\1|p')"
[ -n "$id" ] || fail "the package holds no desktop entry in /usr/share/applications"

before="$(mktemp)" after="$(mktemp)"
trap 'status=$?; rm -f "$before" "$after"; if installed; then purge || echo "test-package: could not purge $name" >&2; fi; exit $status' EXIT
snapshot >"$before"

# Everything the package needs is on the system already: apt must install
# nothing else (and so download nothing).
plan="$(apt-get install -s "$deb" 2>&1 | sed -n 's/^Inst \([^ ]*\) .*/\1/p')"
[ "$plan" = "$name" ] || fail "apt-get would install more than $name: $(echo $plan)"
apt-get install -y -qq -o Dpkg::Use-Pty=0 "$deb" >/dev/null || fail "apt-get install $deb failed"
installed || fail "$name is not installed after apt-get install"

out="$(QT_QPA_PLATFORM=offscreen zyhelpeditor --version 2>/dev/null)" ||
    fail "zyhelpeditor --version failed"
[ "$out" = "$name $version" ] || fail "zyhelpeditor --version printed '$out'"
for f in /usr/bin/zyhelpeditor "/usr/share/applications/$id.desktop" \
         "/usr/share/icons/hicolor/scalable/apps/$id.svg" "/usr/share/metainfo/$id.metainfo.xml" \
         "/usr/share/mime/packages/$id.xml"; do
    [ -f "$f" ] || fail "not installed: $f"
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
log "installed: --version, desktop entry, icon, metainfo and file types in place"

purge || fail "apt-get purge $name failed"
! installed || fail "$name is still installed after apt-get purge"
snapshot >"$after"
if ! diff -u "$before" "$after" >&2; then
    fail "the system differs after the purge (above)"
fi
left="$(grep -rlE "$id|x-zyproject|x-zyhelp" /usr/share/applications /usr/share/mime \
    /usr/share/icons /usr/share/metainfo /etc 2>/dev/null || true)"
[ -z "$left" ] || fail "still mentioned after the purge: $left"
log "purged: nothing of $name is left ($((SECONDS - start)) s in all)"
