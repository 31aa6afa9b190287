say
say 'x'
sayn 'y'
sayr 'z'
sayx 'ls'
push 1
queue
queue 'q'
exit
exit 3
return
return a + 1
cd
cd '/tmp'
interpret 'say 1'
nop
;
;;
do forever; leave 'x'; iterate; end
a =
a = 'v'
a[2:] = 'x'
a[1] = 'y'
a[:3] = 'z'
a[2:4] = 'w'
a[1] == 2
'ls -l'
