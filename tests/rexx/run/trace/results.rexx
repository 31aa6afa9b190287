/* TRACE R: clause lines, assignments and SAY values */
trace r
x = 2
y = x * 3
say y
trace o
say 'quiet'
