say 1
  /* open /* nested */
say 2
