#!/usr/bin/env bash
# Measures how long the program takes from its start until its main window is on the screen, on a
# screen of its own (packages xvfb, xdotool, openbox), with a list of folders as a person has it.
#   bench/start.sh [TIMES]
# SPDX-License-Identifier: AGPL-3.0-or-later
set -euo pipefail
times=${1:-5}
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target PrjVelmora velmora velmora-worker >/dev/null
work=$(mktemp -d)
export HOME=$work VELMORA_HOME=$work/program XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work/config
export DISPLAY=:83 LC_ALL=C.UTF-8
Xvfb $DISPLAY -screen 0 1400x900x24 >/dev/null 2>&1 & screen=$!
trap 'kill $screen 2>/dev/null; rm -rf "$work"' EXIT
sleep 1
openbox >/dev/null 2>&1 &
mkdir -p "$work/Documents"
cp docs/*.md "$work/Documents"
build/bin/velmora folders add "$work/Documents" >/dev/null
for _ in $(seq "$times"); do
  begin=$(date +%s%N)
  build/bin/PrjVelmora /EN >/dev/null 2>&1 & program=$!
  # The menu bar's window, not the splash: the splash has no name.
  until xdotool search --onlyvisible --name '^Velmora$' >/dev/null 2>&1; do sleep 0.005; done
  echo "window up after $((($(date +%s%N) - begin) / 1000000)) ms"
  kill $program
  wait $program 2>/dev/null || true
done
