trace a
do i = 1 to 2
  nop
end
call sub
trace 'O'
exit
sub: trace s
  return
