/* TRACE(): the setting as letters; with an argument, the old setting back and the new one in force */
say trace()
say trace('o') trace()
say trace('Results') trace('n') trace('F') trace('l') trace()
say trace('?n') trace('!?e') trace('!') trace()
say trace(3) trace('') trace()
call try "trace('z')"
call try "trace('r', 1)"
call try "trace(2.5)"
call sub
say 'after sub' trace()
exit
sub:
  say 'in sub' trace('c') trace('s') trace()
  return
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc trace()
  return
