v = 'x1'
say 2 * v
