# KSAve writes the new text but leaves the file's modification time as it was.
touch -d '2020-01-02 03:04:05' a.txt
"$TOLVA" -batch a.txt -c "input x" -c ksave
stat -c '%y' a.txt | cut -c1-19
