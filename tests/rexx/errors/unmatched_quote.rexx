say 'abc
say 1
