s1 = 'it''s'
s2 = "say ""hi"""
s3 = ''
s4 = 'ab'x 'a b'x 'abc'x '4142 43'X ''x
s5 = '1 11110000'b '0100 0001'B '1'b
s6 = 'abc'xyz 'q'b1
s7 = 1e+5 1E-3 .5 12.
s8 = "tab	in"
