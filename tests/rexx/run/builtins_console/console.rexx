/* Standard output is a file here, so the width comes from COLUMNS (set to 77 by the test); standard input is
   no terminal, so nothing waits on it. */
say linesize() externals()
call try "linesize(1)"
call try "externals(1)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
