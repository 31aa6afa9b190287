call sub
exit
sub: return
