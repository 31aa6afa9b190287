# A fault in the middle of a batch run leaves the changed text in a ".check" file, the trace and restart.x.
"$TOLVA" -batch a.txt -c "input changed" -c "xtestfault segv"
echo "exit $?"
grep -c '^Commande ' xed.trace
tail -n 1 xed.trace
