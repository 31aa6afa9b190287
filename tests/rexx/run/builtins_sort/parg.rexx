/* Options with their words, the rest with its spacing, and the rest split again. */
r = parg('-o out.txt -v rest of  it', '-o 1 -v 0', p)
say r p.0 p.1 p.2 '-' p.o.0 p.o.1 p.v.0 '-' '['p.3']' p.p.0 p.p.1 p.p.3 '-' o v
/* No option at all. */
say parg('a b', '-x 1', q) q.0 '['q.1']' q.q.0 q.q.1 q.q.2
/* An option that is not in the list, and one short of words, leave the stem alone. */
say parg('-z a', '-x 1', q2) q2.0
say parg('-x', '-x 1', q3) parg('-x -y', '-x 1 -y 0', q3) q3.0
/* A lone "-" is a word; options compare after folding by the case mode. */
say parg('-x - rest', '-x 1', q4) q4.x.1 q4.2
say parg('-V x', '-v 0', q6) q6.1 q6.2
/* With a fourth argument of 1 the rest is split with quotes. */
say parg('-v "a b" c', '-v 0', q5, 1) q5.q5.0 '['q5.q5.1']' q5.q5.2 '['q5.2']'
say parg('"a b" c', '', q7, 0) q7.q7.0 q7.q7.1
/* The string may be a variable that the function itself sets. */
x = '-x -y 2 tail'
say parg(x, '-x 0 -y 1', x) x.1 x.2 x.y.1 x.3 x
