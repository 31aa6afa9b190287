say 'before'
interpret 'x = 1 +'
