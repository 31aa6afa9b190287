x = substr('abc',,
  0)
