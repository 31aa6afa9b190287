#!/usr/bin/env bash
# Change and locate on one 1,000,000-line file, each beside the peer tool run on the same file in this job:
# a string changed on every line and saved (sed -i), a regular-expression change (sed -E), and a locate of
# a string that only the last line holds (grep).
set -eu
tolva=${TOLVA_BIN:?}
dir=$(mktemp -d /tmp/tolva-bench.XXXXXX)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
awk 'BEGIN { for (i = 1; i <= 1000000; i++) printf "%07d %-71s\n", i, "the quick brown fox jumps over the lazy dog, line after line after line" }' > base.txt
echo "the last line holds zebra" >> base.txt
measure() { /usr/bin/time -f '%e' "$@" 2>&1 >/dev/null | tail -n 1; }
ratio() { awk -v a="$2" -v b="$3" -v what="$1" 'BEGIN { printf "%s: tolva %.2f s, %s %.2f s, ratio %.2f (aim < 2)\n", what, a, ENVIRON["PEER"], b, (b > 0 ? a / b : 0) }'; }

cp base.txt t.txt; cp base.txt s.txt
t=$(measure "$tolva" -batch t.txt -c "backup off" -c "c/fox/cat/ * *" -c file)
s=$(measure sed -i 's/fox/cat/g' s.txt)
cmp -s t.txt s.txt || { echo "the plain change differs from sed's"; exit 1; }
PEER="sed -i" ratio "change a string on every line, load and save" "$t" "$s"

cp base.txt t.txt; cp base.txt s.txt
t=$(measure "$tolva" -batch t.txt -c "backup off" -c "rc/([0-9]+) the/the \$1/ * *" -c file)
s=$(measure sed -E -i 's/([0-9]+) the/the $1/g' s.txt)
cmp -s t.txt s.txt || { echo "the regular-expression change differs from sed's"; exit 1; }
PEER="sed -E -i" ratio "regular-expression change on every line, load and save" "$t" "$s"

t=$(measure "$tolva" -batch base.txt -c "/zebra/" -c "qquit")
s=$(measure grep -n zebra base.txt)
PEER="grep" ratio "locate a string on the last line, with load" "$t" "$s"
