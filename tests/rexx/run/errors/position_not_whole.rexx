n = 1.5
parse value 'abc' with a +(n) b
