drop a
drop a b.c (list) d
drop (x) (y)
upper u1 u2
lower (l1)
f: procedure
g: procedure expose a b. (c)
