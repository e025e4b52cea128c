#!/usr/bin/env bash
# Fails when a folder includes what stands right of it, or when logic includes Qt Widgets.
set -euo pipefail
cd "$(dirname "$0")/.."

# The line of folders; components side by side share a rank.
declare -A rank=([platform]=0 [sqlite]=0 [workers]=0 [engine]=1 [imaging]=1 [recognition]=1
  [devices]=1 [mail]=1 [core]=2 [store]=3 [indexing]=5 [ocr]=6 [workbench]=7 [search]=8
  [mainwindow]=9 [app]=10 [cli]=10)
bad=0
complain() { echo "$1"; bad=1; }

while IFS=: read -r file line text; do
  from=${file%%/*}
  to=$(sed -E 's/.*"([a-z]+)\/.*/\1/' <<<"$text")
  [ -n "${rank[$to]:-}" ] || continue
  [ "$from" = "$to" ] && continue
  if [ "${rank[$to]}" -ge "${rank[$from]}" ]; then
    complain "$file:$line: $from/ must not include $to/"
  fi
done < <(grep -rnE '^#include "[a-z]+/' --include='*.h' --include='*.cpp' "${!rank[@]}" 2>/dev/null)

while IFS=: read -r file line _; do
  case "$file" in
    */windows/*|app/*) ;;
    *) complain "$file:$line: widgets outside windows/ and app/" ;;
  esac
done < <(grep -rnE '^#include <Q(Application|Dialog|Widget|MainWindow|MessageBox|[A-Za-z]*(Button|View|Box|Label|Layout|Edit|Browser|Menu|ToolBar|Splitter|Action))>' \
  --include='*.h' --include='*.cpp' "${!rank[@]}" 2>/dev/null | grep -vE '<Q(String|ByteArray|Utf8String|AnyString)View>')

[ "$bad" = 0 ] && echo "layers: clean"
exit "$bad"
