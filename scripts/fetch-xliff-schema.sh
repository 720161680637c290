#!/usr/bin/env bash
# Unpacks the XLIFF 1.2 schema (strict) that Debian ships with
# php-symfony-translation into DEST, without installing the package, and points
# its import of xml.xsd at the copy beside it, so that validating needs no network.
#
#   fetch-xliff-schema.sh DEST     (default /var/cache/zyhelpeditor/xliff-1.2)
set -euo pipefail

dest="${1:-/var/cache/zyhelpeditor/xliff-1.2}"
schema="$dest/xliff-core-1.2-strict.xsd"
[ -s "$schema" ] && [ -s "$dest/xml.xsd" ] && exit 0

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
chmod 777 "$work" # apt's download user writes here
download() { (cd "$work" && apt-get download -qq php-symfony-translation); }
download || { apt-get update -qq && download; } # the package lists may be missing or old
dpkg-deb -x "$work"/php-symfony-translation_*.deb "$work/x"
from="$(find "$work/x" -type d -path '*Translation/Resources/schemas' | head -n1)"
[ -n "$from" ] || { echo "fetch-xliff-schema: no schemas in php-symfony-translation" >&2; exit 1; }
mkdir -p "$dest"
cp "$from/xml.xsd" "$dest/xml.xsd"
sed 's|schemaLocation="http://www.w3.org/2001/xml.xsd"|schemaLocation="xml.xsd"|' \
    "$from/xliff-core-1.2-strict.xsd" > "$schema.new"
mv "$schema.new" "$schema"
echo "fetch-xliff-schema: $schema"
