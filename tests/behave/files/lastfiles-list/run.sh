# Each file opened goes to the head of ~/tolva.lastfiles, once, with the times in one column.
printf '"/gone/old.txt"   January 2, 2020   03:04:05\n' > "$HOME/tolva.lastfiles"
"$TOLVA" -batch a.txt b.txt -c "x a.txt" -c "x ./a.txt"
sed -E 's/[A-Z][a-z]+ [0-9]+, [0-9]{4}   [0-9:]{8}$/TIME/' "$HOME/tolva.lastfiles"
