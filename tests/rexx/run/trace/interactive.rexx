trace ?r
x = 1
say x
y = 2
say 'end' y
