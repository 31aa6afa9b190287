call try "rpos('a')"
call try "rpos('a','b',0)"
call try "rpos('a','b',1,2)"
call try "rpos('*a','b')"
call try "rpos('a**','b')"
call try "rpos('\(*','b')"
call try "rpos('\(a','b')"
call try "rpos('a\)','b')"
call try "rpos('[b-a]','b')"
call try "rpos('[ab','b')"
call try "rpos('\(\(\(\(\(\(\(\(\(\(a\)\)\)\)\)\)\)\)\)\)','a')"
call try "rpos('[a][a][a][a][a][a][a][a][a][a][a]','a')"
call try "rpos('.*.*.*a$', copies('a',3000)'b')"
call try "rchange(copies('a',3000)'b', '.*.*.*a$', 'x')"
call try "rchange('a','b')"
call try "rchange('a','b','c',5)"
call try "rchange('a','*','c')"
call try "upperw()"
call try "upperw('a','b')"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
