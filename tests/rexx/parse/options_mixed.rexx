OPTION MIXED SETENV NOLOAD
Foo = Bar.Baz
Say Foo; f = MyFunc(1)
