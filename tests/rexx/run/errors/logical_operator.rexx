say 1 & 2
