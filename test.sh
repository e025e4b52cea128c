#!/usr/bin/env bash
# Installs what is needed, builds with assertions and runs the tests.
#   ./test.sh [CTEST ARGUMENT...]     ./test.sh -R search     runs those whose name fits
set -euo pipefail
project="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=tools/setup.sh
source "$project/tools/setup.sh"

install_packages "${build_packages[@]}" "${test_packages[@]}"
cd "$project"
build_preset dev
# A run that finds no test at all has tested nothing.
exec ctest --preset dev --no-tests=error "$@"
