/* One of two processes that share a working copy: each writes the shared value many times, reads it back and
   checks that what it reads is whole, and writes its own counter and the shared last value to "lasting". */
trace off
parse arg id n
torn = 0; failed = 0
do i = 1 to n
  'globalv select race set shared' copies(id, 3000)i
  if rc \= 0 then failed = failed + 1
  'globalv select race setp last' id'-'i
  if rc \= 0 then failed = failed + 1
  'globalv select race setp count'id i
  if rc \= 0 then failed = failed + 1
  'globalv select race get shared'
  if rc \= 0 then failed = failed + 1
  if \whole(shared) then torn = torn + 1
end
say id 'torn' torn 'failed' failed
exit

/* A value one of the writers wrote: 3000 times A or B, then a count from 1 to n. */
whole: procedure expose n
  parse arg s
  x = left(s, 1)
  if x \= 'A' & x \= 'B' then return 0
  if verify(left(s, 3000), x) \= 0 then return 0
  k = substr(s, 3001)
  if \datatype(k, 'W') then return 0
  return k >= 1 & k <= n
