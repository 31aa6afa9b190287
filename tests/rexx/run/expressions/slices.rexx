/* reading and assigning slices */
s = 'abcdef'
say s[2:3]
say '['s[5:8]']'
say '['s[7]']'
say '['s[9:8]']'
say s[:2]
say s[4:]
say s[1]
x = 'ab'; x[5] = 'z'; say '['||x']'
x[1:6] = 'xy'; say x
y[2] = 'Q'; say y
n = 12345; n[2:3] = ''; say n
