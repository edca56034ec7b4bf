#!/usr/bin/env bash
# Installs what the build needs, builds all of it and runs every test.
set -euo pipefail
cd "$(dirname "$0")"
. ./setup.sh
install_packages "${python_packages[@]}"
build_release
ctest --preset release "$@"
