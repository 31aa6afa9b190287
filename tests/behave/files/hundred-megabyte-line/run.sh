# A single line of 100 MB with no line end reads and writes back byte for byte, gaining its line end.
head -c 100000000 /dev/zero | tr '\0' 'q' > long.txt
cp long.txt before.txt
printf '\n' >> before.txt
"$TOLVA" -batch long.txt -c "fileconv unix" -c save
echo "exit $?"
cmp long.txt before.txt && echo "identical"
rm -f long.txt before.txt long.txt%
