/* TRACE C shows every command; TRACE E the failing ones (after they ran); TRACE N the negative ones; ! stops running them, a second ! runs them again */
trace c
'exit 0'
'exit 1'
trace e
'exit 0'
'exit 2'
trace n
'exit 3'
trace !c
'exit 4'
say 'rc' rc
trace !
'exit 5'
say 'rc' rc
trace o
'exit 6'
say 'rc' rc
