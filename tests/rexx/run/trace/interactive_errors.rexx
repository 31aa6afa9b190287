/* interactive trace: a typed line with an error is reported and the pause goes on; a command typed sets RC_D */
trace ?e
x = 1
say 'x is' x 'rc_d is' rc_d
