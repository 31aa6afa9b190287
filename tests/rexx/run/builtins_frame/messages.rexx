call try "left('abc',)"
call try "abs()"
call try "queued(1)"
call try "substr('abc')"
call try "insert('a')"
call try "index('a','b',1,0,3)"
call try "find('a')"
call try "max()"
call try "left('abc','x')"
call try "left('abc',2.5)"
call try "left('abc',-1)"
call try "substr('abc',0)"
call try "left('abc',2,'xy')"
call try "copies('x',1e10)"
call try "copies('x',-1)"
call try "copies('x','a')"
call try "substr('abc',1.0000000001)"
call try "left('abc',3.0000000001)"
call try "pos('a','b',1,2)"
call try "strip('a','x')"
call try "verify('a','b','x')"
call try "xrange('ab')"
call try "xrange(,'')"
call try "abbrev('abc','a',-1)"
call try "max(1,'a')"
call try "sign('')"
call try "space('a',-1)"
call try "centre('a',-1)"
exit
try: parse arg expr
  signal on syntax
  interpret 'r =' expr
  say expr '=' r
  return
syntax:
  say expr 'raised' rc
  return
