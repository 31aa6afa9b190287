parse value 'abc' with a +x b
