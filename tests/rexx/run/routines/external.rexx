/* external routines: a file NAME.plm beside the program, loaded once, with its own labels */
say 'sum' ext_sum(2, 3)
call ext_sum 10, 20
say 'result' result
call ext_sum 1, 1
say 'again' result
say 'shebang' ext_bang('z')
