/* a routine that recurses without end, under SIGNAL ON SYNTAX: the handler still runs */
signal on syntax
n = 0
call down
exit
down: n = n + 1; call down
syntax: say 'caught' rc 'at depth' (n > 1000); exit 0
