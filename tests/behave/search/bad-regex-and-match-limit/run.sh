# A bad expression says why; a catastrophic one on a long line ends with a message instead of hanging.
python3 -c "print('top'); print('a' * 200000 + 'b')" > a.txt
"$TOLVA" -batch a.txt -c 'r/(ab/' -c 'regtype legacy' -c 'r/ab\)/' -c 'r/a*a*a*a*a*a*c/' -c 'regtype ecmascript' \
  -c 'r/(a+)+$/' -c 'input still on top' -c 'r/a+b$/' -c 'input found the long line' -c 'file'
echo "rc $?"
head -c 60 a.txt | cut -c 1-20
tail -n 1 a.txt
rm -f a.txt a.txt%
