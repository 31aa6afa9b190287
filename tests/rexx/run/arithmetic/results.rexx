/* results and their text forms at the default DIGITS */
say 0.1 + 0.2
say 1234567890
say '1234567890'
say 1234567890 + 0
x = 1.50; say x
y = 2.00; say y
z = 10.00; say z
say 1.5 + 1.5
say 3.000 * 2
say 7 % 2
say -7 % 2
say 7 // -2
say -7 // 2
say -7 // -2
say 7 // 2
say 2 ** -1
say 2 ** 0.5
say (1 = 1) + 1
say 007
say 1 / 3
say 2 / 3
say 10 / 4
say 1e3
say 12.5 - 2.5
say 0.5 - 0.5
say 1.25 * 4
say 100 * 1.1
say 1.1 + 2.2
say -(3)
say +'  4  '
say 1.5e2 + 0
say 1e-5 * 1
say 123456789012 + 1
