say f(1)[2]
