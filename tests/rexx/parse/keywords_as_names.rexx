/* Words of the keyword table used where no keyword can stand. */
do = 1
if = 2
say == 3
end: nop
say -1
x = 5 + say
nop 1
then = 4
select = do + if
call else
value = digits() form(1)
