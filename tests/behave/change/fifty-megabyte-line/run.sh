# One 50 MB line: searched, changed and saved without a crash.
python3 -c "import sys; sys.stdout.write('x' * 50000000 + 'needle\n')" > big.txt
"$TOLVA" -batch big.txt -c 'r/needle$/' -c '/needle/' -c 'c/needle/pin/' -c 'c/x/y/ 1 3' -c file
echo "rc $?"
head -c 5 big.txt; echo; tail -c 6 big.txt; wc -c < big.txt
rm -f big.txt big.txt%
