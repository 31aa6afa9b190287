x = 'zz'x
