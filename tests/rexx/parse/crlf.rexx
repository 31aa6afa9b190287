say 1
x = 2
