option lower
Foo = Bar
call Baz 1
option upper
sigl.x = 1
