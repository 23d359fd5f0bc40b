#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# with_wine.sh COMMAND ...: runs a command that starts Windows programs. Wine keeps its state in a folder
# of some 700 MB: a fresh one serves one run, and goes with it.
set -euo pipefail
wine=/usr/lib/wine
WINEPREFIX=$(mktemp -d)
export WINEPREFIX WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= LC_ALL=C.UTF-8
unset DISPLAY
trap '"$wine/wineserver64" -k -w || true; rm -rf "$WINEPREFIX"' EXIT
echo "== making a folder for Wine"
# The server stays, and its services start here: a test that started them would not end before they
# do, for those who read its output.
"$wine/wineserver64" -p
"$wine/wine64" wineboot -i >/dev/null 2>&1 </dev/null
"$@"
