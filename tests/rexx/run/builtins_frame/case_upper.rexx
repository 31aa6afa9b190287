say abs(-1) ABS(-1) Abs(-2) 'LENGTH'('abc')
