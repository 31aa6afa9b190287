# A save keeps the file's mode; the backup keeps the old one too.
chmod 751 run.me
"$TOLVA" -batch run.me -c "input x" -c save
stat -c '%a %n' run.me run.me%
