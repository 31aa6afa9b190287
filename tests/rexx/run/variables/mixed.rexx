option mixed
abc = 1; ABC = 2; say abc ABC
say Abc
