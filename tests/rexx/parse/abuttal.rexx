/* Abuttal becomes OP_CONC; a blank between operands is the blank concatenation. */
say 'abc'xyz
say a'b' "c"d
say (a)(b) (c) (d)
say x[1] y
say f(1)g(2)
say 'a'||b c
call show'x' 1
