/* A whole number is a count of seconds, laid out as hours, minutes and seconds. */
say time(0) time(3725) time(86399) time(90000) time('59')
call try "time(-1)"
call try "time(1.5)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
