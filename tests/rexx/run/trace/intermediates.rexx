trace i
a.1 = 'one'
i = 1
z = a.i || '!' ( -i )
s = 'abcdef'
t = s[2:3]
say f(i)
trace off
exit
f: return \ 0
