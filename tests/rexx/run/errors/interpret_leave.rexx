say 'a'
  interpret 'nop; leave'
