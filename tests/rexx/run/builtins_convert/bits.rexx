say c2x(bitand('F0F0'x, '3C'x)) c2x(bitand('F0F0'x, '3C'x, 'FF'x)) c2x(bitor('0F'x, 'F000'x)) c2x(bitor('0F'x, 'F000'x, '01'x))
say c2x(bitxor('FF'x, '0F'x)) c2x(bitxor('FFFF'x, '0F'x, '0F'x)) bitand('abc') bitor('ab', '20'x, '20'x)
