c = '0123456789'
c = c||c||c||c||c||c||c||c||c||c
s = ''
do 1000000; s = s || c; end
say s[99999991:100000000]
say '['s[100000001]']'
drop s
say 'done'
