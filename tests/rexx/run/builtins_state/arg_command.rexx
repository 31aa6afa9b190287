/* ARG(0) and the words of the command line, in the program and in a routine */
say arg() '[' || arg(1) || ']'
say '[' || arg(0) || ']'
say arg(0, 'c') '|' arg(1, 'c') '|' arg(3, 'C') '|[' || arg(4, 'c') || ']'
say arg(2, 'x') arg(0, 'e') arg(0, 'o') arg(2, 'e')
call sub 'p', 'q'
exit
sub:
  say arg() arg(2) '[' || arg(0) || ']'
  signal on syntax
  say arg(1, 'c')
  return
syntax:
  say 'raised' rc
  return
