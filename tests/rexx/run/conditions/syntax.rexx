/* SIGNAL ON SYNTAX: RC is the error number, SIGL its line, no report is written */
signal on syntax
say 'start'
x = 1 / 0
say 'not reached'
syntax:
say 'syntax rc' rc 'sigl' sigl
signal on syntax name again
interpret 'y = 1 +'
again:
say 'again rc' rc 'sigl' sigl
call deeper
deeper: procedure
  signal on syntax name inner
  z = 'a' + 1
inner:
  say 'inner rc' rc 'sigl' sigl
  x = 1 / 0
