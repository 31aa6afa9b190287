trace off
queue 'one'
queue 'two'
'MAKEBUF'
say 'makebuf' rc queued()
push 'three'
queue 'four'
'makebuf'
say 'makebuf' rc queued()
queue 'five'
'sentries'
say 'sentries' rc
'dropbuf'
say 'dropbuf' rc queued()
pull x
say x queued()
'dropbuf x'
say 'dropbuf x' rc
'dropbuf 5'
say 'dropbuf 5' rc
'desbuf'
say 'desbuf' rc queued()
'dropbuf 1'
say 'dropbuf 1' rc queued()
parse pull a
parse pull b
say a b queued()
'dropbuf'
say 'dropbuf' rc
parse pull c
say 'from input:' c
