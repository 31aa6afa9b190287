parse pull a, b
