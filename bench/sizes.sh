#!/usr/bin/env bash
# Measures how cost grows: 10,000, 100,000 and 1,000,000 documents made of real text; the first
# index, an update with nothing and one with 1 % changed, and requests of every kind.
#   bench/sizes.sh TEXTFOLDER [FOLDER] [SIZES…]      needs some 9 GB of disk for the million
# TEXTFOLDER is what bench/run.sh has unpacked (FOLDER/text), or any folder of texts.
set -euo pipefail
text=$(realpath "$1")
work=$(realpath -m "${2:-${TMPDIR:-/tmp}/velmora-sizes}")
sizes=("${@:3}"); [ ${#sizes[@]} -gt 0 ] || sizes=(10000 100000 1000000)
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8
cmake --preset release -DVELMORA_BENCH=ON >/dev/null
cmake --build --preset release --target velmora velmora-worker bench_requests make_documents >/dev/null
bin=$PWD/build/bin
mkdir -p "$work"

measure() { # name command… : seconds and peak memory in MB
  local name=$1; shift
  sync
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >"$work/$name.log" 2>&1 || true
  read -r seconds memory < <(tail -n 1 "$work/time")
  printf '%-22s %9.2f s %9.1f us a document %6d MB peak of the program\n' "$name" "$seconds" \
    "$(awk -v s="$seconds" -v n="$count" 'BEGIN { print s * 1e6 / n }')" "$((memory / 1000))"
}

for count in "${sizes[@]}"; do
  docs=$work/docs-$count archive=$work/archive-$count
  echo "== $count documents"
  [ -e "$docs/.ready" ] || { "$bin/make_documents" "$text" "$docs" "$count" && touch "$docs/.ready"; }
  find "$docs" -type f -print0 | xargs -0 cat >/dev/null # none pays for the cold disk
  rm -rf "$archive"
  velmora=("$bin/velmora" --archive "$archive")
  "$bin/velmora" init "$archive" >/dev/null
  "${velmora[@]}" folders add "$docs" >/dev/null
  measure "first index" "${velmora[@]}" index
  [ "$count" != "${sizes[0]}" ] || least=$seconds
  awk -v s="$seconds" -v n="$count" -v s0="$least" -v n0="${sizes[0]}" \
    'BEGIN { printf "cost of a document: %.2f of that at %d\n", (s / n) / (s0 / n0), n0 }'
  measure "nothing changed" "${velmora[@]}" index
  # Every hundredth document gets a line more.
  find "$docs" -name '*[0-9]00.txt' -type f | while read -r file; do echo "a line more" >>"$file"; done
  measure "1 % changed" "${velmora[@]}" index
  du -sm --apparent-size "$docs" "$archive/indexes" | awk '{ print $1 " MB " (NR == 1 ? "documents" : "index, stored text included") }'
  measure "open and find" "${velmora[@]}" search reference
  "$bin/bench_requests" "$archive/indexes/SHARED" "$docs" 400
done
