x = ' ab'x
