/* RPOS: the position of the first match from a start, with the case folded on request. */
say rpos('b\+','aabbb') rpos('^a','aab',2) rpos('^a','aab') rpos('[0-9]\+','ab12')
say rpos('B','abc',1,1) rpos('B','abc',1,0) rpos('c$','abcc') rpos('\<w','aw w') rpos('a\>','ab a')
say rpos('x\?y','ay') rpos('a.c','xxabc') rpos('[^a-c]','abcd') rpos('a*b','xb') rpos('\.','a.b') rpos('(','a(b')
say rpos('z','abc') rpos('b','abc',4) rpos('b','abcb',3) rpos('','xxb') rpos('[]x]','a]')
/* RCHANGE: every match replaced, left to right; \1 to \9 are groups. */
say rchange('hello world','o','0') rchange('abc','\(b\)','[\1]') rchange('aaa','a*','x') rchange('abc','x*','-')
say rchange('ABC','b','x',1) rchange('ABC','b','x') rchange('a.b','\.','\\') rchange('abc','^.','X') rchange('ab','\(a\)\(b\)','\2\1\0')
/* Nested groups, sets with the case folded, and long subjects. */
say rchange('abcd','\(a\(b\)\)\(c\)','<\1|\2|\3>') rpos('[A-C]\+','xxbc',1,1) rpos('[A-C]\+','xxbc')
say rpos('a*b', copies('a',200000)) rpos('.*x', copies('a',200000)'x') length(rchange(copies('ab',100000),'b','c'))
/* UPPERW: the first letter of each word in capitals, the rest in lower case. */
say upperw('hello wORLD foo_bar x-y') '['upperw('')']' upperw('1abc é-x') upperw("o'neil mc.donald")
