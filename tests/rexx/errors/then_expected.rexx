if a b
say 1
