#!/usr/bin/env bash
# Installs what is needed, builds the program and starts it.
#   ./run.sh [--build] [ARGUMENT...]     --build: only build; other arguments go to the program
set -euo pipefail
project="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=tools/setup.sh
source "$project/tools/setup.sh"

only_build=no
if [ "${1:-}" = --build ]; then
  only_build=yes
  shift
fi

install_packages "${build_packages[@]}"
(cd "$project" && build_preset release)
[ "$only_build" = no ] || exit 0

if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-}" ]; then
  velmora="$(printf '%q' "$project/build/bin/velmora")"
  cat >&2 <<TEXT
Built. There is no display to open a window on. The command line does the same:
  $velmora init ~/archive
  $velmora --archive ~/archive folders add ~/Documents
  $velmora --archive ~/archive index
  $velmora --archive ~/archive search 'words to find'
TEXT
  exit 0
fi
exec "$project/build/bin/PrjVelmora" "$@"
