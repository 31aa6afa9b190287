say datatype('12') datatype('') datatype('1a') datatype(' 12 ')
say datatype('','X') datatype('','A') datatype('Ab1','A') datatype('0110','B') datatype('01 1','B')
say datatype('abc','L') datatype('aBc','M') datatype('aBc','U') datatype('ABC','u') datatype('1e3','N')
say datatype('a.b_c!','S') datatype('12.0','W') datatype('12.5','W') datatype('1234567890','W')
say datatype('ff 00','X') datatype('f','x') datatype('fg','X')
say digits() fuzz() form()
numeric digits 12
numeric form engineering
say digits() form() datatype('1234567890','W')
say errortext(40)
say arch() version()
call try "datatype('a','q')"
call try "errortext(100)"
call try "errortext(0)"
call try "digits(1)"
call try "change('a','b')"
call try "change('a','b','c',2)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
