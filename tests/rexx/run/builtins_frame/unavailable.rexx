say 'before'
say DY_BEEP()
say 'after'
