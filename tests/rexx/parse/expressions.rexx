x = -2 ** 2
x = 2 ** 3 ** 2
x = a < b = c
x = a | b & c
x = a && b | c
x = 1 + 2 * 3 - 4 / 5 % 6 // 7
x = \a = b
x = a \= b a /= b a <> b a >< b
x = a >= b a \< b a <= b a \> b
x = a >> b a << b a >>= b a <<= b a \== b
x = a = = b
x = +a - -b
x = (a + b) * c
x = a || b c
x = f() g(,) h(1,) k(,2)
x = s[1] s[1:2] s[2:] s[:3] 'abc'[2] (a b)[1:1]
x = `ls -l`
x = length(a) + max(1, 2, 3)
