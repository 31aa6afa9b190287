trace o; trace; trace 'n'
trace z
