say fact(5)
call fib 10
say result
say sq(3) sq(4)
x = 1; call noproc; say x
a.1 = 'one'; a.2 = 'two'; call shared; say a.1 a.3
say even(10) odd(7)
exit
fact: procedure
  arg n
  if n <= 1 then return 1
  return n * fact(n - 1)
fib: procedure
  parse arg n
  if n < 2 then return n
  call fib n - 1; a = result
  call fib n - 2
  return a + result
sq: parse arg v; return v ** 2
noproc: x = 2; return
shared: procedure expose a.
  a.1 = 'uno'; a.3 = 'tres'
  return
even: procedure
  parse arg n
  if n = 0 then return 1
  return odd(n - 1)
odd: procedure
  parse arg n
  if n = 0 then return 0
  return even(n - 1)
