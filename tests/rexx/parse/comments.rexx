/* A comment /* nested */ still open
   over lines */ say 'one'
say 'two' /* trailing */
x = 1/* glued */+2
/**/say/**/'three'
y = a /* between */ b
