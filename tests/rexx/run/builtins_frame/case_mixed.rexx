option mixed
say abs(-1) length('ab')
signal on syntax
say ABS(-1)
exit
syntax: say 'error' rc
