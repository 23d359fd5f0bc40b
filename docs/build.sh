#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The API reference into build/docs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build/docs
version=$(sed -n 's/^project(zelconfutils VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
{ cat docs/Doxyfile && echo "PROJECT_NUMBER = $version"; } | doxygen -
echo "== build/docs/index.html"
