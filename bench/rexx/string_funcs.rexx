/* SUBSTR, POS and TRANSLATE in a loop. */
s = 'the quick brown fox jumps over the lazy dog'
t = 0
do i = 1 to 300000
  t = t + pos('fox', s) + length(substr(s, 5, 10)) + pos('z', s, 10)
  u = translate(s, 'ABC', 'abc')
end
say t u
