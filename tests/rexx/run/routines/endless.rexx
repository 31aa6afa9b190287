call down 1
exit
down: procedure
  parse arg n
  call down n + 1
