a = 5
s.1 = 'one'
i = 1
say symbol('a') symbol('b') symbol('1x') symbol('a-b') symbol('s.i') symbol('s.2') symbol('')
say value('a') value('b') value('s.i') value('A', 7) a
say value('new', 'x') new
call try "value('1a')"
call try "value('a b')"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
