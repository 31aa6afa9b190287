ln -s "$TOLVA" xeda
./xeda -batch
