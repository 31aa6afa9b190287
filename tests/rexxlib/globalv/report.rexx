/* A new session: the lasting values of the race. */
trace off
'globalv select race get countA countB last'
say 'rc' rc 'countA' counta 'countB' countb 'last' last
