#!/usr/bin/env bash
# A string target found only on the last line of a 1,000,000-line file, beside grep -c of the same string;
# DELete * and its UNDo on the same file, with peak memory against a plain open.
set -eu
tolva=${TOLVA_BIN:?}
dir=$(mktemp -d /tmp/tolva-bench.XXXXXX)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
awk 'BEGIN { for (i = 1; i < 1000000; i++) printf "%07d %-71s\n", i, "the quick brown fox jumps over the lazy dog, line after line after line"
             print "1000000 and here, at the very end, the needle" }' > big.txt
size=$(stat -c %s big.txt)
measure() { /usr/bin/time -f '%e %U %S %M' "$@" 2>&1 >/dev/null | tail -n 1; }
cpu() { awk -v u="$2" -v s="$3" 'BEGIN { printf "%.3f", u + s }'; }
read -r _ gu gs _ < <(measure grep -c needle big.txt)
grep_s=$(cpu x "$gu" "$gs")
# The load alone, then the load with ten searches from the top: the difference is ten passes over the file.
read -r _ ou os open_kb < <(measure "$tolva" -batch big.txt -c qquit)
args=()
for k in 1 2 3 4 5 6 7 8 9 10; do args+=(-c top -c "/needle/"); done
read -r _ su ss _ < <(measure "$tolva" -batch big.txt "${args[@]}" -c "input found" -c "backup off" -c file)
tail -n 2 big.txt | head -n 1 | grep -q needle || { echo "the search did not find the last line"; exit 1; }
open_s=$(cpu x "$ou" "$os")
search_s=$(awk -v a="$(cpu x "$su" "$ss")" -v b="$open_s" 'BEGIN { d = (a - b) / 10; printf "%.4f", (d > 0 ? d : 0) }')
awk -v t="$search_s" -v g="$grep_s" 'BEGIN {
  printf "string target on the last of 1,000,000 lines: tolva %.4f s per search, grep -c %.3f s, ratio %.2f (aim < 2)\n", t, g, (g > 0 ? t/g : 0) }'
# DELete * and UNDo: the journal holds the line buffers themselves, so memory stays near the open's.
read -r _ du ds del_kb < <(measure "$tolva" -batch big.txt -c "delete *" -c qquit)
read -r _ uu us undo_kb < <(measure "$tolva" -batch big.txt -c "delete *" -c undo -c "backup off" -c file)
[ "$(wc -l < big.txt)" = 1000001 ] || { echo "DELete * and UNDo did not give the file back"; exit 1; }
awk -v o="$open_s" -v d="$(cpu x "$du" "$ds")" -v u="$(cpu x "$uu" "$us")" -v ok="$open_kb" -v dk="$del_kb" -v uk="$undo_kb" -v sz="$size" 'BEGIN {
  printf "DELete * of 1,000,000 lines: %.3f s beyond the open; with UNDo and a save: %.3f s beyond the open\n", d - o, u - o
  printf "peak memory: open %.1f MB, DELete * %.1f MB, DELete * and UNDo %.1f MB: %.2f times the open, %.2f times the file (aim < 1.2, < 3)\n",
         ok/1024, dk/1024, uk/1024, (ok > 0 ? uk/ok : 0), uk*1024/sz }'
