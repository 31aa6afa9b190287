/* PARSE over many lines: words, a literal pattern and positions on each of 300,000 lines */
n = 0
do i = 1 to 300000
  line = 'key' || i || '=value' || i '  word2 word3 tail of the line'
  parse var line k '=' v w2 w3 rest
  parse var line 1 first 4 . 10 more
  if w2 = 'word2' then n = n + 1
end
say n k v rest
