/* | and & do not evaluate their right side when the left decides */
if 1 | nosuch() then say 'short or'
if 0 & nosuch() then nop
else say 'short and'
x = 1
if x | nosuch() then say 'variable on the left'
