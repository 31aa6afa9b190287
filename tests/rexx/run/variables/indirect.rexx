/* name lists in values for UPPER, LOWER and DROP; the special variable names */
names = 'p q.1'
p = 'abc'; q.1 = 'def'
upper (names)
say p q.1
lower (names)
say p q.1
drop (names) names
say p q.1 names
signal next
next: say sigl
