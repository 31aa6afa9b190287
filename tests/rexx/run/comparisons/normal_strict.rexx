/* normal comparisons strip blanks and compare numbers as numbers; strict ones do neither */
say '1' = ' 1 '
say '1' == ' 1 '
say 'a ' = 'a'
say 'abc' == 'abc '
say 'abc' = 'abc '
say 1 = 1.0
say 1 == 1.0
say 'b' >> 'aa'
say 'b' > 'aa'
say 'ab' < 'b'
say 10 > 9
say '10' >> '9'
say '10' > '9'
say 'abc' \= 'abd'
say 'abc' \== 'abc'
say 'A' == 'a'
say 'abc' >>= 'abc'
say 'abc' <<= 'abd'
say 2 >= 2
say 2 <= 1
x = 1.0; y = 1
say x == y
numeric fuzz 1
say 1.00000001 = 1
say 1.00000001 == 1
numeric fuzz 0
say 1.00000001 = 1
