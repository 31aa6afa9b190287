/* the same operators at 1, 2, 5 and 12 digits */
numeric digits 2
say 1 / 3
say 123 + 0
say 1.25 + 0
numeric digits 1
say 7 / 2
say 10 % 3
numeric digits 5
say 100 / 7
say 2 / 3 + 0
say 99999 + 1
numeric digits 12
say 1 / 7
say 2 ** 40
say 123456789012 * 10
x = 0.1; do 3; x = x + 0.1; end; say x
