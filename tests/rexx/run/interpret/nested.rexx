/* INTERPRET inside INTERPRET, labels in interpreted text, and variables shared with the program */
a = 1
interpret 'b = a + 1; interpret "c = b * 10"'
say a b c
interpret 'nop; here: say "labels in interpreted text do nothing"'
code = 'do i = 1 to 3; t = t || i; end'
t = ''
interpret code
say t
interpret ''
say 'empty text is fine'
