#!/usr/bin/env bash
# The same REXX programs run by palom and by the installed peer interpreter (rexx), with CPU times and their ratio.
# Usage: bench/rexx/run.sh [PALOM]   (default: build-rexx/app/palom under the source tree)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
palom=${1:-${PALOM_BIN:-$here/../../build-rexx/app/palom}}
peer=$(command -v rexx || true)
[ -x "$palom" ] || { echo "palom not found at $palom (build the palom target first)"; exit 1; }
[ -n "$peer" ] || echo "note: no peer interpreter 'rexx' on PATH; palom's times are shown alone"

# CPU seconds (user + system) of a run, its output discarded: the best of three, so that other work on the
# machine, which stretches elapsed time, does not decide the figure. INPUT (a file, or /dev/null) feeds each run.
seconds() {
  local input=$1 best="" t
  shift
  for _ in 1 2 3; do
    t=$( { TIMEFORMAT='%U %S'; time "$@" <"$input" >/dev/null 2>&1; } 2>&1 | awk '{ printf "%.3f", $1 + $2 }')
    if [ -z "$best" ] || awk -v a="$t" -v b="$best" 'BEGIN { exit !(a < b) }'; then best=$t; fi
  done
  printf '%s' "$best"
}

printf '%-14s %10s %10s %8s\n' program palom rexx ratio
for prog in int_loop string_build parse_lines stem_tails fib_calls; do
  file=$here/$prog.rexx
  p=$(seconds /dev/null "$palom" "$file")
  if [ -n "$peer" ]; then
    r=$(seconds /dev/null "$peer" "$file")
    awk -v n="$prog" -v p="$p" -v r="$r" 'BEGIN { printf "%-14s %9.3fs %9.3fs %8.2f\n", n, p, r, (r > 0 ? p / r : 0) }'
  else
    printf '%-14s %9.3fs %10s %8s\n' "$prog" "$p" - -
  fi
done
# Built-in functions: a word-frequency count over a generated 10 MB text read from standard input, and a loop of
# SUBSTR/POS/TRANSLATE.
text=$(mktemp)
trap 'rm -f "$text"' EXIT
awk 'BEGIN { srand(7); while (size < 10485760) { line = ""; for (k = 0; k < 10; k++) line = line " w" int(rand() * 5000);
             print line; size += length(line) + 1 } print "__END__" }' >"$text"
for prog in word_freq string_funcs; do
  file=$here/$prog.rexx
  p=$(seconds "$text" "$palom" "$file")
  if [ -n "$peer" ]; then
    r=$(seconds "$text" "$peer" "$file")
    awk -v n="$prog" -v p="$p" -v r="$r" 'BEGIN { printf "%-14s %9.3fs %9.3fs %8.2f\n", n, p, r, (r > 0 ? p / r : 0) }'
  else
    printf '%-14s %9.3fs %10s %8s\n' "$prog" "$p" - -
  fi
done
echo "ratio = palom time / rexx time (below 1: palom is faster)"
