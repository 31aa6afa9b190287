ln -s target.txt link.txt
