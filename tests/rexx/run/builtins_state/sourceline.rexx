/* SOURCELINE: the number of lines and each line, within its limits */
say sourceline()
say sourceline(1)
say '[' || sourceline(5) || ']'

call try 'sourceline(0)'
call try 'sourceline(18)'
call try 'sourceline(1, 2)'
call try 'sourceline(17)'
call try "sourceline('x')"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax: say expr 'raised' rc
