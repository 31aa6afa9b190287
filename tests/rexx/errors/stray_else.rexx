else say 1
