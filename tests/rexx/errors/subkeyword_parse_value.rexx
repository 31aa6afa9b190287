parse value with a
