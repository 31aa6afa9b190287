# A kill (SIGTERM) during a batch run saves the changed text of every changed file before the program ends.
"$TOLVA" -batch a.txt b.txt -c "input changed b" -c "x a.txt" -c "input changed a" -c "xtestfault term"
echo "exit $?"
