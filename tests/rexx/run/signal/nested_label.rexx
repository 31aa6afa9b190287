/* a label inside nested blocks: the rest of each block runs once, then control goes on behind them */
signal deep
say 'not shown'
do i = 1 to 2
  if i = 1 then do
    say 'not shown either'
deep:
    say 'deep' i
  end
  say 'after the inner block' i
end
say 'behind' i
n = 0
do forever
  n = n + 1
  if n > 2 then signal out
end
out:
say 'out' n sigl
