/* PUSH, QUEUE and PULL; PULL reads standard input when the queue is empty */
queue 'first'; queue 'second'; push 'zero'
pull a; say a
parse pull b; say b
pull c; say c
pull d; say d rc
pull e; say '['e']' rc
