say change('aXbXc','X','--') change('abcABC','b','.',1) change('abc','','') change('aaa','aa','b')
say comma('123456') comma('1234567') fwc('1234') fwc('12') fwc('123') fwc('1234567')
say change('a1b1', 1, 22, 0) change(121, 1, 3)
