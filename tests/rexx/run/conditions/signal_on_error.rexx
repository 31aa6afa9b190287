/* SIGNAL ON ERROR NAME: the jump turns the condition off, so a second error goes unhandled */
signal on error name oops
'exit 2'
say 'not reached'
oops:
say 'oops rc' rc 'sigl' sigl
'exit 3'
say 'went on' rc
signal on halt
signal on notready
say 'enabled'
