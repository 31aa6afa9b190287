say date('B','1/1/2000') date('B','1/1/1') date(730119) date(0) date(date('B','28/2/2024') + 1)
say date('W','1/1/2000') date('W','23/11/2026') date('w','1/1/1')
say date('D','31/12/2000') date('D','1/3/2001') date('C','1/1/2000') date('C','2/1/2001')
say date('E','5/3/2026') date('E4','5/3/2026') date('J','5/3/2026') date('O','5/3/2026') date('S','5/3/2026') date('U','5/3/2026')
say date('N','5/3/2026') '|' date('L','5/3/2026') '|' date('M','5/3/2026') '|' date(,'5/3/2026')
say date('B','29/2/2000') length(date('S'))
call try "date('B','31/2/2000')"
call try "date('B','29/2/1900')"
call try "date('B','1/1/0')"
call try "date('B','1-1-2000')"
call try "date('X')"
call try "date('B','1/1/2000',1)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
