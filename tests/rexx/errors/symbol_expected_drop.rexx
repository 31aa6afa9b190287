drop 1
