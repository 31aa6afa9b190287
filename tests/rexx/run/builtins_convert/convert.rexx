say c2x('ab') '['c2x('')']' x2c('6162') x2c('61 62') c2x(x2c('161'))
say b2x('11000011') b2x('111') b2x('1111 0000') x2b('C3') x2b('1 f')
say c2d('a') c2d('ff'x) c2d('ff'x,1) c2d('ff'x,2) c2d('00000001'x) c2d('0080'x,1)
say x2d('ff') x2d('ff',2) x2d('81',2) x2d('F0') x2d('FFF',2) x2d('1',3) x2d('')
say d2x(255) d2x(-1,4) d2x(10,4) d2x(0) d2c(97) c2x(d2c(-1,2)) c2x(d2c(0))
say c2o('A') c2o('ab')
numeric digits 15
say x2d('FFFFFFFFFF')
