chmod 444 ro.txt
