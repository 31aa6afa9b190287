say words(' a  b c ') words('') words('one')
say '['word('a b',3)']' word(' x  yy z',2)
say '['subword(' a  b   c ',2)']' '['subword('a b c d',2,2)']' '['subword('a b',3)']' '['subword('a b',1,0)']'
say '['delword('a b c d',2,2)']' '['delword('a b c',2)']' '['delword('a b',5)']'
say wordindex('a  b',2) wordindex('a',2) wordlength('a bcd',2) wordlength('a',3)
say wordpos('b c','a b c') wordpos('b  c','a b c b c',3) wordpos('x','a') wordpos('','a')
say find('a b c','c') find('a b c','b c') find('a b','')
say '['space(' a  b c ')']' space(' a  b c ',2,'-') '['space('a b',0)']'
