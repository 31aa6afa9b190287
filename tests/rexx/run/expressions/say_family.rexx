/* SAYN writes no terminator, SAYR a carriage return */
sayn 'a'
sayn 'b'
say
sayr 'c'
say 'd'
say 1.50 + 0
say 1.50
