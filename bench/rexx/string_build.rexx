/* string building: a long string grown by concatenation, and many short strings made and joined */
s = ''
do i = 1 to 100000
  s = s || 'abc'
end
t = ''
do i = 1 to 200000
  w = 'item' || i
  t = w 'and' i
end
say t
