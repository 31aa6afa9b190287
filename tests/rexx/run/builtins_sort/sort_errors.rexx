a.0 = 1; a.1 = 'x'
b.0 = 'many'; c.0 = -1
d.0 = 2; d.1 = '12'; d.2 = 'x1'
call try "sort()"
call try "sort(a,'1 *',1,2,3)"
call try "sort('a')"
call try "sort(a,'0 5')"
call try "sort(a,'3 2')"
call try "sort(a,'q 1 2')"
call try "sort(a,'1')"
call try "sort(a,,'x')"
call try "sort(a,,1,0)"
call try "sort(b)"
call try "sort(c)"
call try "sort(d,'N 1 *')"
call try "sort(e)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
