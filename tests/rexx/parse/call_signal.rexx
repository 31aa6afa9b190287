call f
call f 1, 2
call f(1, , 3)
call f , 2
call f (1), 2
call f (1, 2)
call 'ext.plm' 'a'
call f'x'
call on error
call off notready name handler
signal on novalue name nv
signal off syntax
signal lab
signal 'Lab'
signal value 'l' || 1
signal (target)
signal end
