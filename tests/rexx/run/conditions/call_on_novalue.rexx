call on novalue name nv
say 'value' not.set
exit
nv: say 'handler from' sigl; return
