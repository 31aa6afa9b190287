signal skip
say 'not shown'
skip: say 'after skip' sigl
n = 0
again: n = n + 1
if n < 3 then signal again
say 'n' n
signal value 'TAIL'
say 'not shown'
do i = 1 to 3
  say 'loop' i
tail:
  say 'in tail' i
end
say 'behind' i
