interpret 'say 1 / 0'
