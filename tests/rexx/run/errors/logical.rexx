if 0.5 then say 'x'
