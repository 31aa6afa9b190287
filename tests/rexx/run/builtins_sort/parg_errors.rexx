call try "parg('a','b')"
call try "parg('a','b',s,1,2)"
call try "parg(,'-x 1',s)"
call try "parg('a',,s)"
call try "parg('a','-x 1',)"
call try "parg('a','-x 1',s,2)"
call try "parg('a','-x 1 -y',s)"
call try "parg('a','-x one',s)"
call try "parg('a','-x 1','s')"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
