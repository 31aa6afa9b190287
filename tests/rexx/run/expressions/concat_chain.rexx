/* Chains of concatenations: operands taken left to right, each at its turn; numbers shown by their format */
x = 'a'
say x || setx() || x
n = 1.50
say 'n=' || n n + 0 'end'
s = ''
interpret 's =' copies("'x' || ", 70) "'y'"
say length(s) left(s, 3) right(s, 2)
say 1 2 || 3 4
say (x || x) || (x x)
exit
setx:
  x = 'b'
  return '-'
