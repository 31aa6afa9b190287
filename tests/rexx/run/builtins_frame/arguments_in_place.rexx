/* Arguments of built-ins: a later argument that changes a variable, conversions that must not reach a variable
   or a constant, more arguments than are held inline, and handlers that write variables */
x = 'abc'
say substr(x, 1, setx())
say x
n = '007'
say left('abcdefghij', n) n
say left(n, 2) n
m = '0012'
say max(m, 5) m
say max(1, 2, 3, 4, 5, 6, 7, m, 8) min(9, 8, 7, 6, 5, 4, m, 3.5) m
do 2
  say substr('abcdef', '02', 3) substr('abcdef', '02')
end
v = 'old'
say value('v', 'new' v) v
w = 'one two three'
say words(w w) word(w w, 5) wordpos('three', w) w
exit
setx:
  x = 'zzzzz'
  return 2
