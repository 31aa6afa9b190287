/* stems, compound names, DROP, UPPER, LOWER */
a. = 5; say a.x
a.x = 6; drop a.x; say a.x
a.1 = 6; a. = 7; say a.1
i = 'x y'; b.i = 1; say b.i
x = 5; y. = 'x'; say y.7
drop x; say x
j = 3; say c.j.k
k = 'Lo'; say c.j.k
c.j.k = 'hit'; say c.3.Lo c.j.k
say 123
u = 'abc'; upper u; say u
lower u; say u
n = 12; upper n; say n
list = 'p q'; p = 1; q = 2; drop (list); say p q
say d.
d. = 'stem'; say d. d.9
drop d.; say d.9
