/* concatenation forms and operator precedence */
a = 'x'; b = 'y'
say a b
say a||b
say a'-'||b
say 'p'   'q'
say 1 + 2 * 3
say (1 + 2) * 3
say 2 ** 3 ** 2
say -2 ** 2
say \0 \1
say 1 & 0
say 1 | 0
say 1 && 1
say 'ab' || 12
say 3 > 2 & 2 > 1
