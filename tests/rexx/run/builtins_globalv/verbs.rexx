/* The verbs of GLOBALV in one session's working copy. */
trace off
'globalv'; say 'empty' rc
/* set: pairs, an odd name at the end gets an empty value; list answers in the order asked. */
'globalv set x 1 y two z'; say 'set' rc
'globalv list z y x w'; say 'list' rc
/* setl: the value is the rest of the line; verbs in any case. */
'GLOBALV SETL msg  hello   world'; say 'setl' rc
'GlobalV List msg'
/* put: the present values of variables; get: back into variables. */
v1 = 'first value'; v2 = 12 * 2
'globalv put v1 v2'; say 'put' rc
drop v1 v2
'globalv get v1 v2 nothing'; say 'get' rc '['v1']' '['v2']' '['nothing']'
/* stack: the first name's value ends at the head. */
'globalv stack x y'; say 'stack' rc queued()
parse pull a; parse pull b; say a b
/* Names with odd bytes survive, being kept in hexadecimal. */
'globalv set a/b slash .. dots'; say 'odd' rc
'globalv list a/b ..'
/* Errors: no operands, an unknown verb, operands where none are taken. */
'globalv set'; say 'set alone' rc
'globalv frobnicate'; say 'unknown' rc
'globalv purge now'; say 'purge operand' rc
'globalv grplist extra'; say 'grplist operand' rc
