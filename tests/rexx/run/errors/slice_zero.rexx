s = 'abcdef'
say s[0]
