say 'r'
return 4
say 'not shown'
