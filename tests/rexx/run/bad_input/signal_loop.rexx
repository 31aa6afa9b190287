n = 0
again: n = n + 1
if n < 1000000 then signal again
say n
