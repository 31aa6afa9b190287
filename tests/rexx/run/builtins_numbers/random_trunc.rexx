say random(1,10,5) random() random(100)
say random(5,5) random(0,0)
say random(,,123456)
say trunc(12.345,2) trunc(12.9) trunc(-1.5) trunc(3,2) trunc(0.29,2)
call try "random(6,5)"
call try "random(1,2,3,4)"
call try "trunc('x')"
call try "trunc(1,-1)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
