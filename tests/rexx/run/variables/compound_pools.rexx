/* Compound variables read and written from routines: exposed stems, pools of their own, recursion, DROP */
count. = 0
do i = 1 to 3
  w = word('A B A', i)
  count.w = count.w + 1
end
say count.a count.b count.c
call p1
say count.a count.z
call p2
say count.a
say depth(3)
drop count.
say count.a
t.k = 1
call p3
say t.k t.j
s.1 = 'main'
list = 's.'
say shown()
list = ''
say shown()
exit
shown: procedure expose (list)
  return s.1
p1: procedure expose count.
  count.z = 'zed'
  count.a = count.a + 10
  return
p2: procedure
  count.a = 'local'
  say count.a count.b
  return
depth: procedure
  parse arg n
  s.n = n
  if n > 0 then x = depth(n - 1)
  else x = ''
  return s.n || x
p3: procedure expose t.
  call p4
  return
p4: procedure expose t.
  t.j = 'deep'
  t.k = t.k + 1
  return
