x = 'a b c'x
