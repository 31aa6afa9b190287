/* Whole lines rising; SortOrder tells where each line stood. */
a.0 = 4; a.1 = 'pear'; a.2 = 'apple'; a.3 = 'fig'; a.4 = 'banana'
call sort a
say result ':' a.1 a.2 a.3 a.4 '-' a.sortorder.1 a.sortorder.2 a.sortorder.3 a.sortorder.4
call sort a, 'd 1 *'
say a.1 a.2 a.3 a.4 '-' a.sortorder.1 a.sortorder.2 a.sortorder.3 a.sortorder.4
/* Numbers: a blank key is lower than any number. */
n.0 = 3; n.1 = 10; n.2 = 9; n.3 = ''
call sort n, 'N 1 *'
say '['n.1']' n.2 n.3
call sort n, 'n 1 *'
say n.1 n.2 '['n.3']'
/* Several keys: equal keys fall through to the next; a letter stays in force. */
k.0 = 4; k.1 = 'b 2'; k.2 = 'a 9'; k.3 = 'b 1'; k.4 = 'a 3'
call sort k, '1 1 N 3 3'
say k.1 '/' k.2 '/' k.3 '/' k.4
call sort k, 'd 1 1 a 3 3'
say k.1 '/' k.2 '/' k.3 '/' k.4
call sort k, 'd 1 1 3 3'
say k.1 '/' k.2 '/' k.3 '/' k.4
/* The shorter text is padded with blanks. */
p.0 = 3; p.1 = 'a!'; p.2 = 'a'; p.3 = 'a '
call sort p
say '['p.1']['p.2']['p.3']'
/* Natural order, exact case and folded, rising and falling. */
x.0 = 5; x.1 = 'file10'; x.2 = 'file9'; x.3 = 'File2'; x.4 = 'file 1'; x.5 = 'file0.5'
call sort x, 'X 1 *'
say x.1 '/' x.2 '/' x.3 '/' x.4 '/' x.5
call sort x, 'Z 1 *'
say x.1 '/' x.2 '/' x.3 '/' x.4 '/' x.5
call sort x, 'z 1 *'
say x.1 '/' x.2 '/' x.3 '/' x.4 '/' x.5
/* A range of elements; the others stay. */
r.0 = 5; r.1 = 'e'; r.2 = 'd'; r.3 = 'c'; r.4 = 'b'; r.5 = 'a'
call sort r, , 2, 4
say r.1 r.2 r.3 r.4 r.5 '-' r.sortorder.2 r.sortorder.3 r.sortorder.4
/* A count of 0 sorts nothing. */
z.0 = 0
say sort(z)
/* An unset element reads as the stem's value; an exposed stem is sorted where it lives. */
q. = 'same'; q.0 = 2; q.2 = 'first'
call sort q
say q.1 q.2 q.sortorder.1 q.sortorder.2
call sorted_in_procedure
say e.1 e.2 e.3 e.sortorder.1
exit

sorted_in_procedure: procedure expose e.
  e.0 = 3; e.1 = 3; e.2 = 1; e.3 = 2
  call sort e, 'N 1 *'
  return
