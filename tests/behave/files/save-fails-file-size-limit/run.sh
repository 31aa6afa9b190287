# A save that the file-size limit stops part-way keeps the old content and reports the failure.
cp big.txt expected.txt
(ulimit -f 2; "$TOLVA" -batch big.txt -c "input more" -c "input more" -c "save")
cmp big.txt expected.txt && echo "old content intact"
ls -a | grep -c tolva- || true
