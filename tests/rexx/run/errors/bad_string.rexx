say 'abc' + 1
