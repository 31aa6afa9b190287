/* CALL ON ERROR: the handler runs with SIGL and RC, returns, and the program goes on */
call on error
'exit 1'
say 'after' rc
call off error
'exit 2'
say 'off' rc
exit
error:
  say 'handler rc' rc 'sigl' sigl
  'exit 4'
  say 'no second firing' rc
  return
