signal on syntax name gone
x = 1 / 0
