#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing need,
# but only those that are missing. Works as root or through sudo.
set -euo pipefail

packages=(
    cmake g++ make
    qt6-base-dev qt6-base-dev-tools libgl-dev   # Qt 6 Core, Gui, Widgets, Test, moc, uic
    xvfb xauth                                  # xvfb-run, for a window without a display
    qt6-translations-l10n                       # Qt's German texts for its dialogs and buttons
    desktop-file-utils appstream libxml2-utils  # validators of the installed desktop files
    dpkg-dev file                               # dpkg-shlibdeps and file, for cpack -G DEB
    help2man lintian                            # manual pages from --help; the packages' check
    gettext translate-toolkit                   # msgfmt -c, msgmerge and pocount check PO output
    qt6-documentation-tools qt6-tools-dev       # qhelpgenerator, and QHelpEngineCore for its tests
    libqt6sql6-sqlite                           # the help engine reads .qch files through SQLite
    linkchecker tidy chromium-headless-shell    # check the published HTML site
)
# Tools whose version is fixed, which only Debian 12 has under these names:
# clang-format 14 checks the code style (test code_style, skipped without it)
# and clang 14's libFuzzer runs the fuzz targets (scripts/fuzz.sh); the forky
# leg does neither. libclang-rt-14-dev holds the fuzzer's and the sanitizers'
# runtime libraries, which neither clang nor libfuzzer-14-dev pulls in.
if grep -qs '^VERSION_ID="12"' /etc/os-release && grep -qs '^ID=debian' /etc/os-release; then
    packages+=(clang-format-14 clang libfuzzer-14-dev libclang-rt-14-dev)
fi
if [ "${ZY_SETUP_EXTRA:-}" != "" ]; then
    # shellcheck disable=SC2206
    packages+=(${ZY_SETUP_EXTRA})
fi

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ "$(id -u)" -eq 0 ]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    as_root=(false)
fi

if [ ${#missing[@]} -gt 0 ]; then
    echo "setup: installing ${missing[*]}"
    if [ "${as_root[0]:-}" = false ]; then
        echo "setup: missing packages (${missing[*]}) and neither root nor sudo available" >&2
        exit 1
    fi
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The XLIFF 1.2 schema that the tests validate exports against.
"${as_root[@]}" bash "$(dirname "${BASH_SOURCE[0]}")/fetch-xliff-schema.sh"
