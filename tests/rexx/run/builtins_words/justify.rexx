say '['justify('a b c',7)']' '['justify('abc',2)']' '['justify('a b',6,'.')']'
say '['justify('ab cd ef',10)']' '['justify('ab cd ef',11)']' '['justify('a',3)']' '['justify('a b',0)']'
say '['justify('abc defgh',6)']'
