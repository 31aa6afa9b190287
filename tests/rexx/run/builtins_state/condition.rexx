/* CONDITION() in and out of condition handlers: name, instruction, description and state */
trace o
say 'none: [' || condition() || '] [' || condition('C') || '] [' || condition('D') || '] [' || condition('s') || ']'
call on error
'exit 3'
say 'after the handler: [' || condition('C') || '] [' || condition() || ']'
signal on novalue name nv
say undefined_thing
exit
error:
  say 'handler:' condition('C') condition('I') condition('S') '[' || condition('D') || ']'
  call deeper
  say 'handler again:' condition('c') condition('s')
  return
deeper:
  say 'called from the handler:' condition('C') condition('i')
  return
nv:
  say 'signal:' condition('C') condition('I') condition('S') condition('D')
  signal on novalue name nv2
  say 'enabled again:' condition('S')
  call try "condition('x')"
  call try "condition('c', 1)"
  say condition('Condition') condition('description')
  exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc condition('C') condition('I')
  return
