#!/usr/bin/env bash
# Replays the kept inputs and fuzzes: tests/fuzz/run.sh SECONDS [TARGET...]
#
# SECONDS for each target; 0 only replays. Without names all targets run. A new input that breaks a
# promise is left in the build folder, in findings/TARGET, and the command to repeat it is printed.
# VELMORA_FUZZ_SEED: a number makes runs alike; without it each one goes its own way.
# VELMORA_FUZZ_RUNS: ends a target after so many inputs, however long they take: with a seed the
# outcome is then the same on every machine.
# SPDX-License-Identifier: AGPL-3.0-or-later
set -uo pipefail
folder="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
project="$(cd "$folder/../.." && pwd)"
build="${VELMORA_FUZZ_BUILD:-$project/build/fuzz}"
fuzzer="$build/bin/velmora-fuzz"
seconds="${1:?usage: tests/fuzz/run.sh SECONDS [TARGET...]}"
shift
if [ ! -x "$fuzzer" ]; then
  echo "There is no $fuzzer yet: cmake --preset fuzz && cmake --build --preset fuzz" >&2
  exit 2
fi
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(ls "$folder/corpus")

export LC_ALL=C.UTF-8
# Leaks are looked for by the ordinary tests under sanitizers. A library that asks for more memory
# than a worker has is told so here as there.
export ASAN_OPTIONS="detect_leaks=0:max_allocation_size_mb=1024:allocator_may_return_null=1:${ASAN_OPTIONS:-}"

# The largest input a target profits from, in bytes.
longest() {
  case "$1" in
  request | flow | words | alphabet) echo 512 ;;
  doc | xls | xlsb | ppt | msg | wordperfect | chm | media) echo 65536 ;;
  docx | xlsx | pptx | opendocument | pdf | archive | tar) echo 16384 ;;
  *) echo 8192 ;;
  esac
}

# The words that an input is made of.
dictionary() {
  case "$1" in
  docx | xlsx | pptx | opendocument | epub | fb2 | xps | xml) echo xml ;;
  html | mht | page) echo html ;;
  mail | mbox) echo mail ;;
  rtf | request) echo "$1" ;;
  esac
}

# Runs one target; answers its failure.
run_target() {
  local target=$1 found="$build/findings/$1" grown="$build/grown/$1" options
  mkdir -p "$found" "$grown"
  options=(-timeout=30 -rss_limit_mb=1500 "-max_len=$(longest "$target")"
    "-artifact_prefix=$found/" -print_final_stats=1 "-seed=${VELMORA_FUZZ_SEED:-0}")
  [ -z "$(dictionary "$target")" ] || options+=("-dict=$folder/$(dictionary "$target").dict")
  if [ "$seconds" -gt 0 ]; then
    options+=("-max_total_time=$seconds")
  else
    options+=(-runs=0)
  fi
  [ -z "${VELMORA_FUZZ_RUNS:-}" ] || options+=("-runs=$VELMORA_FUZZ_RUNS")
  VELMORA_FUZZ_TARGET="$target" nice -n 19 "$fuzzer" "${options[@]}" "$grown" \
    "$folder/corpus/$target" >"$found/log" 2>&1
}

failed=()
for target in "${targets[@]}"; do
  if run_target "$target"; then
    runs="$(LC_ALL=C sed -n 's/^stat::number_of_executed_units: *//p' "$build/findings/$target/log")"
    echo "$target: $runs runs, nothing found"
  else
    failed+=("$target")
    echo "$target: FAILED"
    grep -aE 'Broken promise|ERROR: |runtime error|SUMMARY|Test unit written' \
      "$build/findings/$target/log" | head -n 8
    echo "  to repeat: VELMORA_FUZZ_TARGET=$target $fuzzer FILE"
  fi
done
[ ${#failed[@]} -eq 0 ]
