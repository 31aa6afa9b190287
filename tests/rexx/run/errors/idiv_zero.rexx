say 5 % 0
