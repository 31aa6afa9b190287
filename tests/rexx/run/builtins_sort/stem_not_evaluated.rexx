/* The stem argument of SORT and PARG is a name: under SIGNAL ON NOVALUE an unset stem raises nothing. */
signal on novalue
a.1 = 'pear'; a.2 = 'apple'; a.0 = 2
call sort a
say a.1 a.2
call parg '-x 1', '-x 1', opts
say "no novalue"
exit
novalue: say 'NOVALUE' condition('D'); exit 1
