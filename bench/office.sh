#!/usr/bin/env bash
# Measures the reading of mixed office files and mail against Recoll with all its helpers: time, and
# how many of the files come out with words. Needs root or sudo for Recoll's packages.
#   bench/office.sh FOLDER [WORK FOLDER]
set -euo pipefail
files=$(realpath "$1")
work=$(realpath -m "${2:-${TMPDIR:-/tmp}/velmora-bench-office}")
cd "$(dirname "$0")/.."
sudo=; [ "$(id -u)" = 0 ] || sudo=sudo
$sudo apt-get install -y --no-install-recommends recollcmd python3-recoll xsltproc antiword unrtf wv \
  libwpd-tools poppler-utils djvulibre-bin libimage-exiftool-perl python3-chardet python3-icalendar \
  python3-lxml python3-mutagen python3-py7zr python3-rarfile python3-six sqlite3 time >/dev/null
export LC_ALL=C.UTF-8
export PATH=/usr/sbin:/usr/bin:/sbin:/bin # Recoll's helpers want the system's own Python
rm -rf "$work"; mkdir -p "$work/recoll"
cmake --preset release >/dev/null
cmake --build --preset release --target velmora velmora-worker >/dev/null
velmora=("$PWD/build/bin/velmora" --archive "$work/archive")
find "$files" -type f -print0 | xargs -0 cat >/dev/null # none pays for the cold disk
echo "$(find "$files" -type f | wc -l) files, $(du -sm --apparent-size "$files" | cut -f1) MB"

measure() { # name command…
  local name=$1; shift
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >"$work/$name.log" 2>&1 || true
  read -r seconds memory < <(tail -n 1 "$work/time")
  printf '%-10s %8.2f s  %6d MB peak of one process\n' "$name" "$seconds" "$((memory / 1000))"
}
printf 'topdirs = %s\nloglevel = 2\nindexallfilenames = 1\n' "$files" >"$work/recoll/recoll.conf"
measure recoll recollindex -c "$work/recoll"; recoll=$seconds
"$PWD/build/bin/velmora" init "$work/archive" >/dev/null
"${velmora[@]}" folders add "$files" >/dev/null
measure velmora "${velmora[@]}" index; own=$seconds
awk -v a="$recoll" -v b="$own" 'BEGIN { printf "rate: %.1f x Recoll\n", a / b }'

# Files with at least one document (themselves, a member, an attachment) that has words of its own.
RECOLL_CONFDIR=$work/recoll python3 - "$files" >"$work/recoll.files" <<'PYTHON'
import sys, urllib.parse
from recoll import recoll
query = recoll.connect().query()
query.execute('dir:' + sys.argv[1])
for document in query:
    if int(document.dbytes or 0) > 0:
        print(urllib.parse.unquote(document.url.removeprefix('file://')))
PYTHON
index=$work/archive/indexes/SHARED/index_a.ix
sqlite3 "$index" "SELECT DISTINCT CAST(f.path AS TEXT) || '/' || CAST(d.file AS TEXT) FROM document d
  JOIN folder f ON f.id = d.folder WHERE d.state IN (0, 1) AND d.words > 0" >"$work/velmora.files"
for name in recoll velmora; do sort -u -o "$work/$name.files" "$work/$name.files"; done
echo "readable: Recoll $(wc -l <"$work/recoll.files"), Velmora $(wc -l <"$work/velmora.files") files"
comm -23 "$work/recoll.files" "$work/velmora.files" >"$work/only-recoll"
comm -13 "$work/recoll.files" "$work/velmora.files" >"$work/only-velmora"
echo "only Recoll: $(wc -l <"$work/only-recoll"), only Velmora: $(wc -l <"$work/only-velmora") (lists in $work)"
