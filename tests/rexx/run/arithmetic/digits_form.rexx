/* NUMERIC DIGITS, FUZZ and FORM */
numeric digits 4
say 1 / 3
say 12345 + 1
say 2 / 3
numeric digits 15
say 1 / 3
say 0.1 + 0.2
numeric digits
say 1 / 3
numeric form engineering
say 12345678901 + 0
say 1e-5 * 1
numeric form scientific
say 12345678901 + 0
numeric form value 'engineering'
parse numeric d f fm; say d f fm
numeric form value 'Scientific'
numeric fuzz 2
parse numeric d f fm; say d f fm
numeric fuzz
parse numeric d f fm; say d f fm
