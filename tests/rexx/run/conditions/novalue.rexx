/* SIGNAL ON NOVALUE: the message, then the handler with SIGL of the clause */
signal on novalue
a = 1
say a
say 'x' undefined_var
say 'not reached'
novalue:
say 'novalue at' sigl
say still_unset
