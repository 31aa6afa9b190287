say 'a'
'ls'
