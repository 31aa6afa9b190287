say '['left('abc',5,'.')']' '['left('abc',2)']' '['right('abc',5)']' '['right('abc',2)']'
say '['center('ab',6,'*')']' '['centre('abc',6)']' '['center('abcde',3)']'
say '['substr('abcdef',2,3)']' '['substr('abc',5,2,'x')']' '['substr('abc',2,4,'.')']' '['substr('abc',2)']'
say length('') length('hello') copies('ab',3) '['copies('ab',0)']' reverse('abc')
say upper('aBc1') lower('AbC1')
say '['delstr('abcdef',3)']' '['delstr('abcdef',3,2)']' '['delstr('abc',5)']'
say '['insert('xy','abc',1)']' '['insert('xy','abc',5,3,'.')']' '['insert('x','abc')']'
say '['overlay('xy','abcdef',2)']' '['overlay('xy','abc',5,,'.')']' '['overlay('x','abc',1,3)']'
say '['strip('  x  ')']' '['strip('  x  ','L')']' '['strip('  x  ','t')']' '['strip('xxaxx',,'x')']'
