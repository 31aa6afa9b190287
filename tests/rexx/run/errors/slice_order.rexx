s = 'abcdef'
say s[3:1]
