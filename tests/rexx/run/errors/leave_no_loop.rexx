say 'a'
  leave
