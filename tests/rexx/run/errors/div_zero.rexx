/* zero divide */
say 'before'
say 5 / 0
