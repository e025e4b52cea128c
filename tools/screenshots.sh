#!/bin/sh
# Photographs every window: five languages, light and dark, 100 % and 125 %.
# SPDX-License-Identifier: AGPL-3.0-or-later
#
#   tools/screenshots.sh FOLDER [NAME...]     NAME: only windows whose name begins like this
# Builds in "build", or in the folder that BUILD names. Ends with 1 when a text is cut off or a control
# has no accessible name; which ones is printed.
set -eu
if [ $# -lt 1 ]; then
    sed -n 's/^#   //p' "$0" >&2
    exit 2
fi
source=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-$source/build}
folder=$1
shift
[ -f "$build/build.ninja" ] || cmake -S "$source" -B "$build" -G Ninja >/dev/null
ninja -C "$build" screenshots >/dev/null
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 QT_LOGGING_RULES='qt.qpa.*=false;default.warning=false'
status=0
"$build/tools/screenshots" "$folder" "$@" || status=1
QT_SCALE_FACTOR=1.25 "$build/tools/screenshots" "$folder" "$@" || status=1
exit $status
