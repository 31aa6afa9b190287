trace l
call sub
say 'done'
exit
sub:
return
