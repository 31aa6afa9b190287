say 'start'
call ext_div
