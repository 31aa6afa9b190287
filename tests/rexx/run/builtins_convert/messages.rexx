call try "b2x()"
call try "b2x('102')"
call try "x2c('6g')"
call try "x2b(' 61')"
call try "x2d('g')"
call try "x2d('123456789012345678')"
call try "x2d('FFFFFFFFFF')"
call try "c2d('0102030405'x)"
call try "d2x(-1)"
call try "d2c(-5)"
call try "d2x(1.5)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
