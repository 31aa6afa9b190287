interpret 'say 1 + 1'
x = 'y = 5'; interpret x; say y
do i = 1 to 5; interpret 'if i = 3 then leave'; say i; end
interpret 'do j = 1 to 2; say "j" j; end'
code = 'a = 1; b = 2'; interpret code; say a + b
interpret 'signal lab'
say 'not shown'
lab: say 'at lab'
interpret 'exit 7'
say 'not shown'
