s = 'interpret s'
interpret s
