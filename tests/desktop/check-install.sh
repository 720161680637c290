#!/usr/bin/env bash
# Installs a build into a temporary folder and checks what a desktop reads from
# it: the desktop entry, the AppStream metainfo and the file types, each with
# its validator and without a single warning, and that they agree with each
# other. Run by CTest (test desktop_files).
#
#   check-install.sh BUILD_DIR APP_ID VERSION
set -euo pipefail

build="$1" id="$2" version="$3"
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
schema="$here/desktop/shared-mime-info.rng"

fail() { echo "check-install: $*" >&2; exit 1; }

for tool in desktop-file-validate:desktop-file-utils appstreamcli:appstream xmllint:libxml2-utils; do
    command -v "${tool%%:*}" >/dev/null ||
        fail "${tool%%:*} is missing (package ${tool#*:}; scripts/setup.sh installs it)"
done

dest="$(mktemp -d)"
trap 'rm -rf "$dest"' EXIT
DESTDIR="$dest" cmake --install "$build" --prefix /usr >/dev/null
usr="$dest/usr"

desktop="$usr/share/applications/$id.desktop"
metainfo="$usr/share/metainfo/$id.metainfo.xml"
mime="$usr/share/mime/packages/$id.xml"
for f in "$usr/bin/zyhelpeditor" "$desktop" "$usr/share/icons/hicolor/scalable/apps/$id.svg" \
         "$metainfo" "$mime"; do
    [ -f "$f" ] || fail "not installed: ${f#"$dest"}"
done
[ -x "$usr/bin/zyhelpeditor" ] || fail "/usr/bin/zyhelpeditor is not executable"

# Each validator must say nothing but that the file is fine.
out="$(desktop-file-validate "$desktop" 2>&1)" || fail "desktop-file-validate failed: $out"
[ -z "$out" ] || fail "desktop-file-validate: $out"

out="$(appstreamcli validate --no-net --pedantic --no-color "$metainfo" 2>&1)" ||
    fail "appstreamcli validate failed: $out"
# AppStream 1.0 asks for <developer>, which the validator of 0.x does not know yet.
known='^$'
if appstreamcli --version | grep -q 'AppStream version: 0\.'; then
    known='^I: [^ ]*: unknown-tag developer$'
fi
if grep -E '^[EWIP]:' <<<"$out" | grep -qvE "$known"; then
    fail "appstreamcli validate: $out"
fi

out="$(xmllint --noout --relaxng "$schema" "$mime" 2>&1)" || fail "xmllint: $out"
[ "$out" = "$mime validates" ] || fail "xmllint: $out"

# The entry, the metainfo and the file types name the same things.
xpath() { xmllint --xpath "$1" "$2" 2>/dev/null; }
ns='*[local-name()="mime-info"]/*[local-name()="mime-type"]'
types="$(xpath "//$ns/@type" "$mime" | sed 's/ *type="\([^"]*\)"/\1;/g' | tr -d '\n')"
claimed="$(sed -n 's/^MimeType=//p' "$desktop")"
[ "$claimed" = "$types" ] || fail "the desktop entry claims '$claimed', the mime file defines '$types'"
[ "$(sed -n 's/^Icon=//p' "$desktop")" = "$id" ] || fail "the desktop entry's Icon is not $id"
grep -qx 'Exec=zyhelpeditor %f' "$desktop" || fail "the desktop entry does not start zyhelpeditor %f"
[ "$(xpath 'string(/component/id)' "$metainfo")" = "$id" ] || fail "the metainfo id is not $id"
[ "$(xpath 'string(/component/launchable)' "$metainfo")" = "$id.desktop" ] ||
    fail "the metainfo does not launch $id.desktop"
[ "$(xpath 'string(/component/releases/release[1]/@version)' "$metainfo")" = "$version" ] ||
    fail "the metainfo's newest release is not $version"
provided="$(xpath '/component/provides/mediatype/text()' "$metainfo" | tr '\n' ';')"
[ "$provided" = "$types" ] || fail "the metainfo provides '$provided', the mime file defines '$types'"

echo "check-install: desktop entry, metainfo and file types of $id $version are valid"
