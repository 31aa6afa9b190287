say length('abc') 'LENGTH'('abc')
exit
length: return 'mine'
