say arg() '['arg(1)']' arg(1,'e') arg(1,'O')
call sub 'a',,'c'
say address()
address sh
say address()
call try "arg(1,'z')"
call try "address(1)"
exit
sub:
  say arg() arg(1) '['arg(2)']' arg(2,'e') arg(2,'o') arg(3,'E') arg(4,'e') arg(3)
  return
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
