x = 1 ,
  + 2
y = f(1, ,
  2)
say 'a',   /* comment */ /* two */
  'b'
z = 3 , /* open
  over a line */
  4
