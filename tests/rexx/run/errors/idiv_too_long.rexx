numeric digits 3
say 10000 % 3
