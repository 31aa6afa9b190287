#!/usr/bin/env bash
# Opening and saving a 1,000,000-line file beside cp of the same file, with peak memory; and 1,000,000 commands
# run through the command processor from a command macro.
set -eu
tolva=${TOLVA_BIN:?}
dir=$(mktemp -d /tmp/tolva-bench.XXXXXX)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
awk 'BEGIN { for (i = 1; i <= 1000000; i++) printf "%07d %-71s\n", i, "the quick brown fox jumps over the lazy dog, line after line after line" }' > big.txt
size=$(stat -c %s big.txt)
measure() { /usr/bin/time -f '%e %U %S %M' "$@" 2>&1 >/dev/null | tail -n 1; }
read -r cp_s _ _ _ < <(measure cp big.txt copy.txt)
# cp copies inside the kernel where it can; dd shows the cost of moving the bytes through a program.
read -r dd_s _ _ _ < <(measure dd if=big.txt of=copy2.txt bs=1M status=none)
read -r tv_s _ _ tv_kb < <(measure "$tolva" -batch big.txt -c "backup off" -c save)
cmp -s big.txt copy.txt || { echo "open+save changed the file"; exit 1; }
awk -v c="$cp_s" -v d="$dd_s" -v t="$tv_s" -v kb="$tv_kb" -v sz="$size" 'BEGIN {
  printf "open + save of 1,000,000 lines (%.1f MB): tolva %.2f s, cp %.2f s, ratio %.2f (aim < 3); dd bs=1M %.2f s, ratio %.2f\n", sz/1e6, t, c, (c > 0 ? t/c : 0), d, (d > 0 ? t/d : 0)
  printf "peak memory: %.1f MB, %.2f times the file (aim < 2.5)\n", kb/1024, kb*1024/sz }'
for i in $(seq 1 1000000); do echo "top"; done > many.x
printf 'x\n' > small.txt
read -r m_s m_u m_sys _ < <(measure "$tolva" -batch small.txt -c "hash many.x" -c many)
awk -v e="$m_s" -v u="$m_u" -v s="$m_sys" 'BEGIN {
  printf "1,000,000 commands from a command macro: %.2f s elapsed, %.2f s CPU (aim well under 1 s)\n", e, u+s }'
