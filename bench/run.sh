#!/usr/bin/env bash
# Measures this program against Recoll and bare FTS5 over the same files in one run, and prints
# ratios. Needs root or sudo for the packages; takes some ten minutes and 3 GB of disk.
#   bench/run.sh [FOLDER FOR THE CORPUS]
set -euo pipefail
cd "$(dirname "$0")/.."
work=${1:-${TMPDIR:-/tmp}/velmora-bench}
packages=(linux-doc-6.1 python3.11-doc postgresql-doc-15 git-doc sqlite3-doc)
sudo=; [ "$(id -u)" = 0 ] || sudo=sudo
for tool in recollindex /usr/bin/time; do
  command -v "$tool" >/dev/null || $sudo apt-get install -y --no-install-recommends recollcmd time
done
export LC_ALL=C.UTF-8
mkdir -p "$work"
now() { date +%s.%N; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

# Text of documentation packages: everything unpacked, pictures left out.
text=$work/text
if [ ! -e "$text/.ready" ]; then
  mkdir -p "$work/packages" "$text"
  (cd "$work/packages" && apt-get download "${packages[@]}")
  for package in "$work"/packages/*.deb; do dpkg -x "$package" "$text"; done
  find "$text" -name '*.gz' -print0 | xargs -0 gunzip -qf || true
  find "$text" -type l -delete
  find "$text" -type f ! -regex '.*\.\(html\|txt\|rst\|yaml\|css\|js\|dot\|c\|h\|sgml\|md\)' -delete
  touch "$text/.ready"
fi
cmake --preset release -DVELMORA_BENCH=ON >/dev/null
cmake --build --preset release --target velmora velmora-worker bare_fts5 bench_requests make_documents >/dev/null
bin=$PWD/build/bin

# A hundred thousand small documents out of the same text.
pieces=$work/made
if [ ! -e "$pieces/.ready" ]; then
  "$bin/make_documents" "$text" "$pieces" 100000
  touch "$pieces/.ready"
fi

bytes=$(find "$text" -type f ! -name .ready -printf '%s\n' | awk '{ s += $1 } END { print s }')
files=$(find "$text" -type f ! -name .ready | wc -l)
echo "corpus: $files files, $((bytes / 1000000)) MB"

measure() { # name command… : seconds and peak memory in MB
  local name=$1; shift
  sync
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >"$work/$name.log" 2>&1 || true
  read -r seconds memory < <(tail -n 1 "$work/time")
  printf '%-28s %8.2f s  %6d MB peak of one process\n' "$name" "$seconds" "$((memory / 1000))"
}

# Each reads every file once beforehand: none pays for the cold disk.
find "$text" "$pieces" -type f -print0 | xargs -0 cat >/dev/null

echo; echo "== first index"
rm -rf "$work"/{bare.db*,recoll,archive}
measure bare-fts5 "$bin/bare_fts5" "$work/bare.db" "$text"; bare=$seconds
mkdir -p "$work/recoll"
printf 'topdirs = %s\nloglevel = 2\nindexallfilenames = 1\n' "$text" >"$work/recoll/recoll.conf"
measure recoll recollindex -c "$work/recoll"; recoll=$seconds
"$bin/velmora" init "$work/archive" >/dev/null
"$bin/velmora" --archive "$work/archive" folders add "$text" >/dev/null
measure velmora "$bin/velmora" --archive "$work/archive" index; own=$seconds
echo "rate: $(ratio "$recoll" "$own") x Recoll, $(ratio "$bare" "$own") x bare FTS5"

echo; echo "== update, nothing changed"
measure recoll-again recollindex -c "$work/recoll"; recoll=$seconds
measure velmora-again "$bin/velmora" --archive "$work/archive" index; own=$seconds
echo "$(ratio "$recoll" "$own") x faster than Recoll"

echo; echo "== size of the index"
size() { du -sb "$@" | awk '{ s += $1 } END { printf "%d", s / 1000000 }'; }
r=$(size "$work/recoll/xapiandb"); o=$(size "$work/archive/indexes"); b=$(size "$work"/bare.db)
echo "Recoll $r MB, bare FTS5 $b MB (no text), Velmora $o MB with stored text: $(ratio "$o" "$r") of Recoll's"

echo; echo "== requests at 100,000 documents, 300 results with hits"
rm -rf "$work/archive2"
"$bin/velmora" init "$work/archive2" >/dev/null
"$bin/velmora" --archive "$work/archive2" folders add "$pieces" >/dev/null
measure velmora-pieces "$bin/velmora" --archive "$work/archive2" index
"$bin/bench_requests" "$work/archive2/indexes/SHARED" "$pieces"
