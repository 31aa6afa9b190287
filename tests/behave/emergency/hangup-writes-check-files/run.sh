# A hang-up or kill during a batch run saves the changed text before the program ends.
"$TOLVA" -batch a.txt -c "input changed" -c "xtestfault hup" -c "input never"
echo "exit $?"
