/* Word frequencies of the text on standard input (ended by a line __END__), with WORDS, WORD and a stem. */
n = 0
count. = 0
do forever
  parse pull line
  if line == '__END__' then leave
  do i = 1 to words(line)
    w = word(line, i)
    if count.w = 0 then do
      n = n + 1
      seen.n = w
    end
    count.w = count.w + 1
  end
end
top = 0
do i = 1 to n
  w = seen.i
  if count.w > top then top = count.w
end
say n 'distinct words, the most frequent seen' top 'times'
