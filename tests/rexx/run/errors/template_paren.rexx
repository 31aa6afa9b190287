parse value 'abc' with a ('b') c
