call try "format()"
call try "format(1,2,3,4,5,6)"
call try "format('abc')"
call try "format(1,-1)"
call try "format(1,'x')"
call try "format(1,,1.5)"
call try "format(12345,3)"
call try "format('9.996',1,2)"
call try "format(1e10,,,1)"
call try "format(1,,,,-2)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
