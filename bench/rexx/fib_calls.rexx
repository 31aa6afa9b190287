/* recursive Fibonacci of 25 through an internal function: about 243,000 calls with PROCEDURE */
say fib(25)
exit
fib: procedure
  parse arg n
  if n < 2 then return n
  return fib(n - 1) + fib(n - 2)
