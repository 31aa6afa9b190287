parse arg a b . 1 rest
parse upper arg x, y
parse value f(1) 'z' with p ':' q
parse upper value a with
parse var line word1 +3 word2 =5 (delim) tail
parse linein l
parse external e
parse source os how name
parse version v
parse pull p1 p2
parse numeric digits fuzz form
parse upper pull
arg first second
pull
if x then parse arg z; else nop
