say length(time()) length(time('N')) time('E')
h = time('H'); m = time('M'); s = time('S')
say (h >= 0 & h < 24) (m >= 0 & m < 1440) (s >= 0 & s < 86400)
c = time('C')
say (wordpos(right(c, 2), 'am pm') > 0) (pos(':', c) > 1)
parse value time('L') with hh ':' mm ':' ss '.' frac
say length(hh) length(mm) length(ss) (length(frac) <= 6)
call try "time('X')"
call try "time(1,2)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
